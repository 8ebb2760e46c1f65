#pragma once

#include "support/ChildProcess.h"

#include <chrono>
#include <random>
#include <string>

namespace faults {

/// The name by which the library knows the process of a fault_host.
constexpr const char* HOST_NAME = "fault-host";

/// Writes a property, as platform::setProperty does. The short name will do for the library's own.
std::string set(const std::string& name, const std::string& value);

/// Makes what was written take effect.
std::string publish();

/// Writes and publishes what shows the overlay of API 0 in a fault_host, with the keys in force.
std::string showOverlay();

/// Gives one of the library's properties, whichever, a text that it may have, or one that it cannot read.
/// Those which say whether the overlay is on are given the right value most of the time.
std::string setAny(std::mt19937& random);

/// Writes the text that fault_host reads: one letter over and over.
std::string setText(std::mt19937& random);

/// Another process that changes and publishes settings, as fast as it can or with random pauses, until this
/// object ends, which kills it.
class Publisher {
public:
    enum class What { TEXT_ALONE, ANYTHING };

    Publisher(What what, unsigned seed, std::chrono::microseconds longestPause = {});

private:
    support::ChildProcess mProcess;
};

}  // namespace faults
