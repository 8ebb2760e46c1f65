#pragma once

#include "figures/sources/Value.h"

#include <sys/types.h>

#include <memory>
#include <string>

namespace sources {

namespace nvidia {
struct Library;
}  // namespace nvidia

/// The figures of one NVIDIA device, from the library that comes with its driver. The first use loads it.
/// That may take seconds or never end, so a thread of its own does it, and nobody waits for that thread;
/// until then every figure is NOT_ANSWERING. Each call takes a lock in the driver that the application needs
/// too. So do not call it on the frame thread, nor for a figure that nobody looks at. In a forked child no
/// figure has a value.
class NvidiaLibrary {
public:
    /// `pciDevice` is like "0000:01:00.0". When it is empty, `number` is the device's index in the library's
    /// order.
    NvidiaLibrary(std::string pciDevice, int number);

    /// Tells the library that it is not needed any more, so that the device may sleep. Neither unloads it nor
    /// stops a thread that is still loading it.
    ~NvidiaLibrary();
    NvidiaLibrary(const NvidiaLibrary&) = delete;
    NvidiaLibrary& operator=(const NvidiaLibrary&) = delete;

    /// Whether loading has ended, successfully or not. The first call starts it.
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
    /// Returns null while the library cannot be used; `otherwise` says why.
    const nvidia::Library* library(Value& otherwise);

    std::shared_ptr<nvidia::Library> mLibrary;
    pid_t mOwner;
    unsigned long long mLastSample = 0;
    Value mLastProcessLoad;
};

}  // namespace sources
