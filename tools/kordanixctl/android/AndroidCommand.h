#pragma once

#include "ExitCode.h"

#include <ostream>
#include <string>
#include <vector>

namespace control {

/// What 'kordanixctl android' was asked.
struct AndroidOptions {
    std::string package;
    std::string verb;
    std::vector<std::string> words;  ///< what follows the verb
    std::string serial;              ///< of the device; empty for the only one
    std::string layers;              ///< folder with a folder for each ABI
    std::string apk;                 ///< the layer's APK
    std::string abi;                 ///< of the layer's files; empty for the application's own
    double seconds = 5.0;            ///< how long to wait for an answer of the application
    bool isShown = false;            ///< print adb's commands, do not run them
    bool keepsDumps = false;         ///< 'off' leaves dumps and pictures on the device
};

/// Puts the overlay over an application on an Android device, and takes it away again. `out` gets results, or
/// adb's commands; `err` what went wrong.
ExitCode runAndroid(const AndroidOptions& options, std::ostream& out, std::ostream& err);

}  // namespace control
