#pragma once

#include "support/ChildProcess.h"

#include <string>

namespace faults {

/// The name by which the library knows the process of a fault_host.
constexpr const char* HOST_NAME = "fault-host";

/// Writes the settings that show the overlay of API 0 in a fault_host, with the keys in force and so opaque,
/// and the text that it reads, and publishes them. Returns what went wrong.
std::string showOverlay(int opacity, const std::string& text = "");

/// Another process that changes and publishes settings as fast as it can: among them the text of the host,
/// one letter over and over, and one that no property can be read from. It ends, which kills it, with this
/// object.
class Publisher {
public:
    explicit Publisher(unsigned seed);

private:
    support::ChildProcess mProcess;
};

}  // namespace faults
