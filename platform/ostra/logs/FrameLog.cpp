#include "ostra/PerProcess.h"
#include "ostra/logs/LogControl.h"

#include <ostra/FrameLog.h>

namespace Ostra {

using platform::LogControl;
using platform::PerProcess;

void setLogColumns(const std::vector<const char*>& names) {
    PerProcess<LogControl>::get().setColumns(names);
}

void setLogValues(const double* values, std::size_t count) {
    if (LogControl* const control = PerProcess<LogControl>::find()) {
        control->setValues(values, count);
    }
}

std::uint32_t logFrame(const LoggedFrame& frame) {
    LogControl* const control = PerProcess<LogControl>::find();
    return control != nullptr ? control->add(frame) : 0;
}

void setLoggedGpuTime(std::uint32_t frame, std::uint64_t nanoseconds) {
    if (LogControl* const control = PerProcess<LogControl>::find()) {
        control->setGpu(frame, nanoseconds);
    }
}

bool isLogging() {
    const LogControl* const control = PerProcess<LogControl>::find();
    return control != nullptr && control->isLogging();
}

}  // namespace Ostra
