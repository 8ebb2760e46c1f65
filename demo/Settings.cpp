#include "Settings.h"

#include "Options.h"
#include "Properties.h"
#include "PropertyTable.h"
#include "Restart.h"
#include "ValueText.h"
#include "properties/SystemProperties.h"

#include <optional>
#include <string>

namespace demo {

namespace {

/// Takes what kordanixctl takes: short names, positions by name, colours as #RRGGBB.
std::string write(const std::string& name, const std::string& value) {
    const control::Property* const property = control::findProperty(name);
    if (property == nullptr) {
        const control::Property* const nearest = control::nearestProperty(name);
        const std::string hint = nearest == nullptr
                                     ? "'kordanixctl list' shows all of them"
                                     : "did you mean '" + std::string(nearest->shortName) + "'?";
        return "There is no property '" + name + "'; " + hint;
    }
    const std::optional<std::string> text = control::toPropertyText(property->type, value);
    if (!text) {
        return "'" + value + "' is no value for " + name + "; expected " +
               std::string(control::expectedText(property->type));
    }
    const std::string full = control::fullName(*property);
    const std::string error = platform::setProperty(full.c_str(), text->c_str());
    return error.empty() ? error : "Cannot set " + full + ": " + error;
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
