#include "vulkan/draw/SrgbCodes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <glm/glm.hpp>
#include <glm/gtc/packing.hpp>

namespace vulkan {

namespace {

constexpr std::size_t HALVES = 65536;
constexpr std::size_t STEPS = 16384;  ///< fine enough for codes next to black
constexpr float WHITE_NITS = 203.0F;
constexpr float PQ_NITS = 10000.0F;  ///< of its largest code
constexpr float SCRGB_NITS = 80.0F;  ///< of 1
constexpr float LARGEST_CODE = 255.0F;

/// SMPTE ST 2084: the light of a code from 0 to 1, where 1 is 10,000 nits.
float lightOfPq(float code) {
    const float power = std::pow(code, 1.0F / 78.84375F);
    return std::pow(std::max(power - 0.8359375F, 0.0F) / (18.8515625F - 18.6875F * power),
                    1.0F / 0.1593017578125F);
}

/// IEC 61966-2-1.
float codeOfLight(float light) {
    return light <= 0.0031308F ? 12.92F * light : 1.055F * std::pow(light, 1.0F / 2.4F) - 0.055F;
}

std::uint8_t rounded(float share) {
    return static_cast<std::uint8_t>(std::lround(LARGEST_CODE * glm::clamp(share, 0.0F, 1.0F)));
}

}  // namespace

SrgbCodes::SrgbCodes(ColorEncoding encoding) : mLight(HALVES), mCodes(STEPS + 1) {
    const bool isPq = encoding == ColorEncoding::PQ;
    for (std::size_t bits = 0; bits < HALVES; ++bits) {
        const float value = glm::unpackHalf1x16(static_cast<glm::uint16>(bits));
        // A comparison that is false for what is no number.
        const float seen = value > 0.0F ? value : 0.0F;
        mLight[bits] =
            (isPq ? lightOfPq(std::min(seen, 1.0F)) * PQ_NITS : std::min(seen * SCRGB_NITS, PQ_NITS)) /
            WHITE_NITS;
    }
    for (std::size_t step = 0; step <= STEPS; ++step) {
        mCodes[step] = rounded(codeOfLight(static_cast<float>(step) / static_cast<float>(STEPS)));
    }
    if (isPq) {  // BT.2020's primaries
        mToNarrow = glm::inverse(
            glm::mat3(0.6274F, 0.0691F, 0.0164F, 0.3293F, 0.9195F, 0.0880F, 0.0433F, 0.0114F, 0.8956F));
    }
}

std::uint8_t SrgbCodes::codeOf(float light) const {
    return mCodes[static_cast<std::size_t>(
        std::lround(glm::clamp(light, 0.0F, 1.0F) * static_cast<float>(STEPS)))];
}

void SrgbCodes::convert(const std::uint8_t* pixel, std::uint8_t* codes) const {
    std::array<std::uint16_t, 4> halves = {};
    std::memcpy(halves.data(), pixel, sizeof(halves));
    const glm::vec3 light = mToNarrow * glm::vec3(mLight[halves[0]], mLight[halves[1]], mLight[halves[2]]);
    codes[0] = codeOf(light.r);
    codes[1] = codeOf(light.g);
    codes[2] = codeOf(light.b);
    const float alpha = glm::unpackHalf1x16(halves[3]);
    codes[3] = rounded(alpha > 0.0F ? alpha : 0.0F);
}

}  // namespace vulkan
