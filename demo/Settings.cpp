#include "Settings.h"

#include "Options.h"
#include "Restart.h"
#include "properties/SystemProperties.h"
#include "settings/Assignment.h"
#include "settings/Properties.h"

#include <string>

namespace demo {

namespace {

/// Accepts what kordanixctl accepts: short names, positions by name, colours as #RRGGBB.
std::string write(const std::string& name, const std::string& value) {
    control::Assignment assignment;
    std::string error = control::readAssignment(name, value, false, assignment);
    if (!error.empty()) {
        return error;
    }
    error = platform::setProperty(assignment.name.c_str(), assignment.text.c_str());
    return error.empty() ? error : "cannot set " + assignment.name + ": " + error;
}

}  // namespace

std::string writeSettings(const Options& options) {
    auto settings = options.settings;
    settings.insert(settings.begin(), {{"status", "true"}, {"proc", PROCESS_NAME}, {"api", "0"}});
    if (options.captureAt >= 0.0) {
        settings.emplace_back("devmode", "true");
    }
    for (const auto& [name, value] : settings) {
        std::string error = write(name, value);
        if (!error.empty()) {
            return error;
        }
    }
    return control::publish();
}

}  // namespace demo
