#pragma once

#include "core/RenderingApiType.h"

namespace opengl {

/// OpenGL and OpenGL ES are one API to the library.
constexpr core::RenderingApiType LAYER_API = core::RenderingApiType::OPENGL_ES;

}  // namespace opengl
