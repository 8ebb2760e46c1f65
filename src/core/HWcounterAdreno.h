#pragma once

#include "utils/Export.h"

namespace core {

struct CounterState {
    enum : int { NOT_INITIALISED = 0, READY = 1, UNAVAILABLE = 3 };
};

/// A source of GPU hardware counters, the base of the sampling thread. Everything it does stands in one
/// source file, so that another source can take that file's place at build time. This one is for Adreno GPUs
/// and has no access to the counters: it always ends up unavailable.
///
/// Each operation says what a ready source must do. One thread at a time may use the object.
class KORDANIX_EXPORT HWcounter {
public:
    HWcounter();

    /// As deInit().
    ~HWcounter();

    /// Tries to get hold of the counters unless that has been settled already. Returns the state after it.
    int init();

    /// Gives the counters back: a ready source is not initialised afterwards.
    void deInit();

    /// Reads the current GPU usage. False when not ready, and then `*usage` is 0.
    bool readGpuUsage(double* usage);

    /// Takes a sample: its time in microseconds, the GPU usage, and the activity of the vertex and fragment
    /// shader stages as fractions. False when there is none, and then nothing is written.
    bool readGpuActivity(unsigned long long* timestamp, double* usage, double* vertexActivity,
                         double* fragmentActivity);

    /// Offset of the GPU's clock from the CPU's, for the Vulkan layer. False and 0 when it is not known.
    bool getCpuGpuTimeDiff(unsigned long long* diff);

    /// Offset of the monotonic from the real-time clock, for the other layers. Whether it is known.
    bool getRealtimeMonotonictimeDiff(unsigned long long* diff);

    int mState;  ///< a CounterState; any other number counts as NOT_INITIALISED
};

}  // namespace core
