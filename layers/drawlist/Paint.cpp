#include "drawlist/Paint.h"

#include <algorithm>

namespace drawlist {

namespace {

constexpr float FULL_COLOR = 255.0F;

float cut(float value, float high) {
    return value > 0.0F ? std::min(value, high) : 0.0F;  // NaN gives 0
}

std::uint8_t toByte(float value) {
    constexpr float ROUNDING = 0.5F;  // the value is positive, and lround for each pixel would be slow
    return static_cast<std::uint8_t>(value + ROUNDING);
}

}  // namespace

Paint::Paint(const glm::vec4& color)
    : mFull{toByte(cut(color.r, 1.0F) * FULL_COLOR), toByte(cut(color.g, 1.0F) * FULL_COLOR),
            toByte(cut(color.b, 1.0F) * FULL_COLOR), 0},
      mAlpha(cut(color.a, 1.0F) * FULL_COLOR) {
    mFull[3] = toByte(mAlpha);
}

std::uint8_t Paint::alphaOf(float coverage) const {
    return toByte(cut(coverage, 1.0F) * mAlpha);
}

Paint Paint::fainter(float factor) const {
    Paint paint = *this;
    paint.mAlpha *= cut(factor, 1.0F);
    paint.mFull[3] = toByte(paint.mAlpha);
    return paint;
}

}  // namespace drawlist
