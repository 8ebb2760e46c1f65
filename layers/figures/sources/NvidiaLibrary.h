#pragma once

#include <sys/types.h>

#include <memory>
#include <string>

#include "figures/sources/Value.h"

namespace sources {

namespace nvidia {
struct Library;
}  // namespace nvidia

/// The figures of one NVIDIA device from the library that its driver brings, which is loaded when it is first
/// needed. Loading may take seconds or never end, so a thread of its own does it, which nobody waits for;
/// until it is done every figure is NOT_ANSWERING. Each call takes a lock in the driver that the application
/// needs too: not for the frame thread, and no figure that nobody looks at. In a forked child every figure is
/// without a value.
class NvidiaLibrary {
public:
    /// `pciDevice` is "0000:01:00.0"; empty when it is not known, then `number` counts in the library's
    /// order.
    NvidiaLibrary(std::string pciDevice, int number);

    /// Leaves the library loaded and its thread alone.
    ~NvidiaLibrary();
    NvidiaLibrary(const NvidiaLibrary&) = delete;
    NvidiaLibrary& operator=(const NvidiaLibrary&) = delete;

    /// Whether it has answered, well or not. The first call begins to load.
    bool hasAnswered();

    Value load();                        ///< percent
    Value processLoad(pid_t process);    ///< percent
    Value clock();                       ///< MHz
    Value maxClock();                    ///< MHz
    Value temperature();                 ///< degrees Celsius
    Value memoryUsed();                  ///< bytes
    Value memoryTotal();                 ///< bytes
    Value processMemory(pid_t process);  ///< bytes
    Value power();                       ///< watts
    Value fan();                         ///< percent of its fastest

private:
    /// Null while there is no answer; `otherwise` says why.
    const nvidia::Library* library(Value& otherwise);

    std::shared_ptr<nvidia::Library> mLibrary;
    pid_t mOwner;
    unsigned long long mLastSample = 0;
    Value mLastProcessLoad;
};

}  // namespace sources
