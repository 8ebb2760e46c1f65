#pragma once

#include "support/ChildProcess.h"

#include <chrono>
#include <string>

namespace faults {

/// The name by which the library knows the process of a fault_host.
constexpr const char* HOST_NAME = "fault-host";

/// Writes and publishes the settings that show the overlay of API 0 in a fault_host, with the keys in force.
/// Returns what went wrong.
std::string showOverlay(int opacity = 128);

/// Another process that publishes settings, as fast as it can or with random pauses, until this object ends,
/// which kills it: the text that fault_host reads, one letter over and over, and how opaque the overlay is; a
/// wild one any of the library's properties, which get texts that they may have and others.
class Publisher {
public:
    explicit Publisher(unsigned seed, bool isWild = false, std::chrono::microseconds longestPause = {});

private:
    support::ChildProcess mProcess;
};

}  // namespace faults
