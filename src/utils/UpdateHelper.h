#pragma once

#include "utils/Export.h"

#include <cstdint>

/// Decides when to update figures: counts frames and reports when 120 ms have passed. Once a frame the layer
/// calls incFrameCount() and isUpdateDuration(). When that returns true, mFrameCount frames fell into the
/// last mUpdateDuration microseconds, and the layer calls resetUpdateDuration() before it counts on. For one
/// thread.
class KORDANIX_EXPORT UpdateHelper {
public:
    UpdateHelper();

    /// Returns to the state of a new object.
    void initUpdateHelper();

    void incFrameCount();

    /// Returns whether 120 ms or more have passed since it last returned true. The first call only starts the
    /// interval.
    bool isUpdateDuration();

    /// Clears the count and the duration. The running interval still counts from the last true result.
    void resetUpdateDuration();

    std::uint32_t mFrameCount = 0;      ///< frames since the last reset
    std::uint32_t mLastUpdateTime = 0;  ///< microsecond clock at the last update; 0: not started
    double mUpdateDuration = 0.0;       ///< microseconds between the last two updates
};
