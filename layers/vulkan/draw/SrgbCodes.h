#pragma once

#include "vulkan/draw/ColorEncoding.h"

#include <cstddef>
#include <cstdint>
#include <glm/mat3x3.hpp>
#include <vector>

namespace vulkan {

/// Turns pixels of scRGB or HDR10 into sRGB's codes, the other way round than the fragment shader: 203 nits
/// become white, and what is brighter or outside sRGB's colours is clipped.
class SrgbCodes {
public:
    static constexpr std::size_t HALF_PIXEL = 8;  ///< bytes of a pixel that is read
    static constexpr std::size_t CODE_PIXEL = 4;  ///< bytes of one that is written

    /// `encoding` is SCRGB or PQ. Throws std::bad_alloc.
    explicit SrgbCodes(ColorEncoding encoding);

    /// From four half floats to red, green, blue and alpha.
    void convert(const std::uint8_t* pixel, std::uint8_t* codes) const;

private:
    std::uint8_t codeOf(float light) const;

    std::vector<float> mLight;         ///< of a half float's bits, 1 at 203 nits
    std::vector<std::uint8_t> mCodes;  ///< of light from 0 to 1
    glm::mat3 mToNarrow{1.0F};         ///< from the encoding's primaries to sRGB's
};

}  // namespace vulkan
