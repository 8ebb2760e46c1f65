#include "Settings.h"

#include "Options.h"
#include "Restart.h"

#include <sys/system_properties.h>

#include <unistd.h>

#include <string>

namespace demo {

namespace {

constexpr const char* PREFIX = "debug.kordanix.";

std::string write(const std::string& name, const std::string& value) {
    const std::string full = name.find('.') == std::string::npos ? PREFIX + name : name;
    if (__system_property_set(full.c_str(), value.c_str()) != 0) {
        return "Cannot set the property " + full + " to '" + value + "'.";
    }
    return {};
}

}  // namespace

std::string writeSettings(const Options& options) {
    std::string error = write("status", "true");
    if (error.empty()) {
        error = write("proc", PROCESS_NAME);
    }
    if (error.empty()) {
        error = write("api", "0");
    }
    if (error.empty() && options.captureAt >= 0.0) {
        error = write("devmode", "true");
    }
    for (const auto& [name, value] : options.settings) {
        if (error.empty()) {
            error = write(name, value);
        }
    }
    if (error.empty()) {
        // Any value publishes; one of its own makes sure that it differs from the last.
        error = write("settingsgeneration", "demo." + std::to_string(getpid()));
    }
    return error;
}

}  // namespace demo
