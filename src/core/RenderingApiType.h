#pragma once

#include "utils/Export.h"

#include <cstdint>

namespace core {

/// The graphics API of a layer. A property names the API whose layer may show the overlay; the two are
/// compared as plain integers, so a layer may use a value of its own.
enum class KORDANIX_EXPORT RenderingApiType : std::int32_t {
    OPENGL_ES = 0,  ///< the property's default
    VULKAN = 1      ///< its captures use the offset between the CPU's and the GPU's clock
};

}  // namespace core
