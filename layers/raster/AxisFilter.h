#pragma once

#include <cstddef>
#include <vector>

namespace raster {

/// One axis of a scaled copy by area averaging: which source cells each target pixel averages, and with what
/// weights. There is nothing beyond the source's ends, so the weights of a partly covered pixel add up to its
/// coverage. An enlarged copy blends between neighbouring source cells. Reuses its memory.
class AxisFilter {
public:
    /// The source cells of one target pixel: `count` cells from `first` on.
    struct Taps {
        std::size_t first = 0;
        std::size_t count = 0;
        std::size_t weights = 0;  ///< index of the first weight
    };

    /// Prepares to copy `sourceCount` cells to low..high (pixels), limited to the pixels limitLow..limitHigh
    /// (exclusive). Returns false when the copy touches no pixel or the interval is not finite.
    bool prepare(float low, float high, int sourceCount, int limitLow, int limitHigh);

    /// The target pixels, end exclusive.
    int first() const { return mFirst; }
    int end() const { return mFirst + static_cast<int>(mTaps.size()); }

    const Taps& taps(int pixel) const { return mTaps[static_cast<std::size_t>(pixel - mFirst)]; }
    const float* weights(const Taps& taps) const { return mWeights.data() + taps.weights; }

private:
    int mFirst = 0;
    std::vector<Taps> mTaps;
    std::vector<float> mWeights;
};

}  // namespace raster
