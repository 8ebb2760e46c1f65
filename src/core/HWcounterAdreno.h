#pragma once

#include "utils/Export.h"

namespace core {

struct CounterState {
    enum : int { NOT_INITIALISED = 0, READY = 1, UNAVAILABLE = 3 };
};

/// A source of GPU hardware counters, the base class of the sampling thread. One source file has its whole
/// implementation, so that a build can replace that file by another source. This one is for Adreno GPUs and
/// has no access to the counters: it always ends up unavailable.
///
/// The comments say what a ready source must do. One thread at a time may use the object.
class KORDANIX_EXPORT HWcounter {
public:
    HWcounter();

    /// Calls deInit().
    ~HWcounter();

    /// Tries to get access to the counters, unless an earlier call has settled it. Returns the resulting
    /// state.
    int init();

    /// Releases the counters: a ready source becomes NOT_INITIALISED.
    void deInit();

    /// Reads the current GPU usage. When not ready, returns false and sets `*usage` to 0.
    bool readGpuUsage(double* usage);

    /// Takes a sample: its time in microseconds, the GPU usage, and the activity of the vertex and fragment
    /// shader stages as fractions. When there is none, returns false and writes nothing.
    bool readGpuActivity(unsigned long long* timestamp, double* usage, double* vertexActivity,
                         double* fragmentActivity);

    /// The offset of the GPU's clock from the CPU's, for the Vulkan layer. When unknown, returns false and
    /// sets 0.
    bool getCpuGpuTimeDiff(unsigned long long* diff);

    /// The offset of the monotonic clock from the real-time clock, for the other layers. Returns whether it
    /// is known.
    bool getRealtimeMonotonictimeDiff(unsigned long long* diff);

    int mState;  ///< a CounterState; any other number counts as NOT_INITIALISED
};

}  // namespace core
