#pragma once

#include "android/HelperProgram.h"

#include <string>

namespace control {

/// Says in plain words what adb, or the device through it, did not want to do, and what to do about that: one
/// sentence. `package` is the application that it was about; `command` is what adb was asked for, and is
/// named when the trouble is none that we know.
std::string describeTrouble(const Answer& answer, const std::string& package, const std::string& command);

/// Whether the words are those of a device that does not have the file it was asked for.
bool isFileMissing(const Answer& answer);

}  // namespace control
