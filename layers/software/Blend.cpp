#include "software/Blend.h"

#include "raster/Luminance.h"

#include <cmath>

namespace software {

namespace {

std::uint8_t toChannel(float value) {
    if (!(value > 0.0F)) {
        return 0;
    }
    return value < 1.0F ? static_cast<std::uint8_t>(std::lround(value * 255.0F)) : std::uint8_t{255};
}

}  // namespace

Paint makePaint(const glm::vec4& color) {
    Paint paint;
    paint.color = {toChannel(color.r), toChannel(color.g), toChannel(color.b), 255};
    paint.alpha = static_cast<float>(toAlpha(color.a)) / static_cast<float>(FULL_ALPHA);
    paint.isDark = raster::isDark(color);
    return paint;
}

// The result's colour is the mean of both, weighted with what each contributes to the result's alpha.
void blendOverTransparent(Pixel& target, const Pixel& color, std::uint32_t alpha) {
    const std::uint64_t overWeight = std::uint64_t{alpha} * FULL_ALPHA;
    const std::uint64_t underWeight = std::uint64_t{target.alpha} * 257U * (FULL_ALPHA - alpha);
    const std::uint64_t sum = overWeight + underWeight;
    const std::uint64_t step = std::uint64_t{FULL_ALPHA} * 257U;
    const auto resultAlpha = static_cast<std::uint8_t>((sum + step / 2) / step);
    if (resultAlpha == 0) {
        return;
    }
    const auto mean = [&](std::uint64_t over, std::uint64_t under) {
        return static_cast<std::uint8_t>((over * overWeight + under * underWeight + sum / 2) / sum);
    };
    target = {mean(color.red, target.red), mean(color.green, target.green), mean(color.blue, target.blue),
              resultAlpha};
}

}  // namespace software
