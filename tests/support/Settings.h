#pragma once

#include "properties/SystemProperties.h"

#include <string>
#include <utility>
#include <vector>

namespace support {

/// Properties of the library by their short names, such as {"widget_memory", "true"}.
using Settings = std::vector<std::pair<std::string, std::string>>;

/// Writes the properties and publishes them with the next number, which the property of that name shows.
/// Returns an empty text or what went wrong.
inline std::string publish(Settings settings) {
    static int generation = 0;
    settings.emplace_back("settingsgeneration", std::to_string(++generation));
    for (const auto& [name, value] : settings) {
        std::string error = platform::setProperty(("debug.kordanix." + name).c_str(), value.c_str());
        if (!error.empty()) {
            return name + ": " + error;
        }
    }
    return {};
}

}  // namespace support
