#include "profiles/ProfileText.h"

#include "settings/Profile.h"
#include "settings/ValueText.h"

#include <set>
#include <utility>

namespace control {

namespace {

std::string lineFor(std::string_view name, const std::string& value) {
    return std::string(name) + ' ' + value + '\n';
}

/// Whether the line already says the value.
bool says(const Property& property, const ProfileLine& line, const std::string& value) {
    return toPropertyText(property.type, line.value) == toPropertyText(property.type, value);
}

}  // namespace

bool isSaved(const Property& property) {
    return !isControlProperty(property) && property.type != PropertyType::GENERATION;
}

std::string updateProfile(std::string_view old, std::map<std::string_view, std::string> values) {
    std::string text;
    for (const std::string_view line : splitLines(old)) {
        const ProfileLine parts = splitProfileLine(line);
        const Property* const property = findProperty(parts.name);
        if (property == nullptr || parts.value.empty() || !isSaved(*property) ||
            !toPropertyText(property->type, parts.value)) {
            text.append(line).append(1, '\n');
            continue;
        }
        const auto value = values.find(property->shortName);
        if (value != values.end()) {
            if (says(*property, parts, value->second)) {
                text.append(line).append(1, '\n');
            } else {
                text += lineFor(parts.name, value->second);
            }
            values.erase(value);
        }
    }
    for (const Property& property : properties()) {
        const auto value = values.find(property.shortName);
        if (value != values.end()) {
            text += lineFor(property.shortName, value->second);
        }
    }
    return text;
}

std::string profileTemplate(const std::string& name) {
    std::string text = "# Settings of the overlay over " + (name == "default" ? "every program" : name) +
                       ": lines as 'kordanixctl set' takes them.\n"
                       "# A line counts without the # at its beginning. These are the defaults.\n\n";
    for (const Property& property : properties()) {
        if (isSaved(property)) {
            text += '#' + std::string(property.shortName) + ' ' + toDisplayText(property, std::nullopt) +
                    "  # " + std::string(property.meaning) + '\n';
        }
    }
    return text;
}

}  // namespace control
