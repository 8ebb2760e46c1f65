#pragma once

#include "utils/Export.h"

#include <cstdint>

namespace core {

/// The graphics API a layer serves. Compared as a plain integer with the property that selects the layer
/// which may show the overlay, so a layer may use values of its own.
enum class KORDANIX_EXPORT RenderingApiType : std::int32_t {
    OPENGL_ES = 0,  ///< the property's default
    VULKAN = 1      ///< its captures use the offset between the CPU's and the GPU's clock
};

}  // namespace core
