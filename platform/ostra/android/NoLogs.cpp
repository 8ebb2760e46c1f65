#include <ostra/FrameLog.h>

/// There is nobody yet who would ask an Android application for a log of frame times.
namespace Ostra {

void setLogColumns(const std::vector<const char*>& /*names*/) {}

void setLogValues(const double* /*values*/, std::size_t /*count*/) {}

std::uint32_t logFrame(const LoggedFrame& /*frame*/) {
    return 0;
}

void setLoggedGpuTime(std::uint32_t /*frame*/, std::uint64_t /*nanoseconds*/) {}

bool isLogging() {
    return false;
}

}  // namespace Ostra
