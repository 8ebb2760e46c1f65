#include "utils/ValueDamper.h"

#include <algorithm>
#include <numeric>

namespace utils {

namespace {

constexpr unsigned int DEFAULT_WINDOW_SIZE = 10;

}  // namespace

ValueDamper::ValueDamper() : ValueDamper(DEFAULT_WINDOW_SIZE) {}

ValueDamper::ValueDamper(unsigned int windowSize) noexcept : mWindowSize(windowSize) {
    mSamples.reserve(windowSize);
}

float ValueDamper::setValue(float value) {
    return setValueUnclamped(value > 0.0F ? std::min(value, 1.0F) : 0.0F);
}

float ValueDamper::setValueUnclamped(float value) {
    if (mSamples.size() <= mWindowSize) {
        mSamples.push_back(value);
    } else {
        mSamples[mRingIndex] = value;
    }
    mRingIndex = mRingIndex < mWindowSize ? mRingIndex + 1 : 0;
    mDampedValue =
        std::accumulate(mSamples.begin(), mSamples.end(), 0.0F) / static_cast<float>(mSamples.size());
    return mDampedValue;
}

}  // namespace utils
