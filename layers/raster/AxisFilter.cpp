#include "raster/AxisFilter.h"

#include "raster/Geometry.h"

#include <algorithm>
#include <cmath>

namespace raster {

bool AxisFilter::prepare(float low, float high, int sourceCount, int limitLow, int limitHigh) {
    mTaps.clear();
    mWeights.clear();
    const double length = double{high} - low;
    if (!std::isfinite(low) || !std::isfinite(high) || !(length > 0.0) || sourceCount <= 0) {
        return false;
    }
    const double scale = sourceCount / length;
    // A pixel averages the source cells under it, but at least one whole cell.
    const double footprint = std::max(scale, 1.0);
    const double spill = 0.5 * (footprint / scale - 1.0);
    mFirst = floorToInt(low - spill, limitLow, limitHigh);
    const int end = ceilToInt(high + spill, limitLow, limitHigh);
    for (int pixel = mFirst; pixel < end; ++pixel) {
        const double center = (pixel + 0.5 - low) * scale;
        const double from = center - 0.5 * footprint;
        const double to = center + 0.5 * footprint;
        Taps taps;
        taps.weights = mWeights.size();
        const int start = floorToInt(from, 0, sourceCount);
        const int last = ceilToInt(to, 0, sourceCount);
        taps.first = static_cast<std::size_t>(start);
        for (int cell = start; cell < last; ++cell) {
            const double covered = std::min(to, cell + 1.0) - std::max(from, double(cell));
            mWeights.push_back(static_cast<float>(covered / footprint));
            ++taps.count;
        }
        mTaps.push_back(taps);
    }
    return !mTaps.empty();
}

}  // namespace raster
