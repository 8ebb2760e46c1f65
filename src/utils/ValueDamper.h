#pragma once

#include "utils/Export.h"

#include <cstdint>
#include <vector>

namespace utils {

/// Smooths a noisy value: the mean of the last mWindowSize + 1 values (of all values while there are fewer).
/// One thread at a time.
class KORDANIX_EXPORT ValueDamper {
public:
    /// The window size is 10.
    ValueDamper();

    /// With a window size of 0 the result is the last value. Ends the process if there is no memory for the
    /// window.
    explicit ValueDamper(unsigned int windowSize) noexcept;

    /// Adds a value clamped to 0..1 (NaN counts as 0) and returns the new mean.
    float setValue(float value);

    /// Adds a value as it is and returns the new mean.
    float setValueUnclamped(float value);

    std::vector<float> mSamples;   ///< ring of the most recent values
    std::uint32_t mWindowSize;     ///< the ring holds one value more than this
    float mDampedValue = 0.0F;     ///< mean after the last value; 0 before the first
    std::uint32_t mRingIndex = 0;  ///< what the next value overwrites once the ring is full
};

}  // namespace utils
