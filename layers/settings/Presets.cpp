#include "settings/Presets.h"

#include "settings/PropertyTable.h"

#include <algorithm>
#include <iterator>

namespace control {

namespace {

/// A switch and whether it is on, or a position and its number.
struct Row {
    std::string_view name;
    const char* text;
};

constexpr Row SMALL[] = {
    {"graphs", "false"},
    {"fit_width", "true"},
    {"widget_fps", "true"},
    {"widget_fps_current", "true"},
    {"widget_cpu_gpu", "true"},
    {"widget_cpu_gpu_cpu_load", "true"},
    {"widget_cpu_gpu_gpu_load", "true"},
};

constexpr Row FULL[] = {
    {"graphs", "true"},
    {"fit_width", "true"},
    {"hide_unreadable", "true"},
};

bool isPosition(const Property& property) {
    return property.type == PropertyType::POSITION;
}

bool isGoverned(const Property& property) {
    const bool isOfWidget = property.shortName.substr(0, 7) == "widget_";
    return (isOfWidget && (property.type == PropertyType::BOOLEAN || isPosition(property))) ||
           std::any_of(std::begin(FULL), std::end(FULL),
                       [&](const Row& row) { return row.name == property.shortName; });
}

template <std::size_t COUNT>
const char* textIn(const Row (&rows)[COUNT], const Property& property, const char* otherwise) {
    const auto* const row = std::find_if(std::begin(rows), std::end(rows),
                                         [&](const Row& each) { return each.name == property.shortName; });
    return row == std::end(rows) ? otherwise : row->text;
}

/// What the preset says; null when it says nothing.
const char* textOf(std::string_view preset, const Property& property) {
    if (preset == "small") {
        return textIn(SMALL, property, isPosition(property) ? nullptr : "false");
    }
    if (preset == "full") {
        return textIn(FULL, property, isPosition(property) ? nullptr : "true");
    }
    return nullptr;
}

/// Where the small preset's line stands: where the rate does. In the middle there is room for one widget a
/// row.
std::string placeOfLine(const std::map<std::string, std::string>& base) {
    const auto found = base.find("debug.kordanix.widget_fps_position");
    const std::string place = found == base.end() || found->second.empty() ? "0" : found->second;
    return place == "1" ? "0" : place == "6" ? "5" : place;
}

}  // namespace

const std::vector<std::string>& presetNames() {
    static const auto* const names =
        new std::vector<std::string>{"small", std::string(DEFAULT_PRESET), "full"};
    return *names;
}

std::string presetError(const std::string& name) {
    std::string known;
    for (const std::string& each : presetNames()) {
        if (each == name) {
            return {};
        }
        known += (known.empty() ? "" : each == presetNames().back() ? " or " : ", ") + each;
    }
    return "there is no preset '" + name + "'; expected " + known;
}

std::string presetAfter(const std::string& name) {
    const std::vector<std::string>& names = presetNames();
    const auto found = std::find(names.begin(), names.end(), name.empty() ? DEFAULT_PRESET : name);
    return found == names.end() || found + 1 == names.end() ? names.front() : *(found + 1);
}

std::vector<Assignment> presetAssignments(const std::string& name,
                                          const std::map<std::string, std::string>& base) {
    std::vector<Assignment> assignments = {{PRESET_PROPERTY, name == DEFAULT_PRESET ? std::string() : name}};
    for (const Property& property : properties()) {
        if (!isGoverned(property)) {
            continue;
        }
        const char* const said = textOf(name, property);
        const auto before = base.find(fullName(property));
        std::string text = said != nullptr ? said : before != base.end() ? before->second : std::string();
        if (name == "small" && (property.shortName == "widget_fps_position" ||
                                property.shortName == "widget_cpu_gpu_position")) {
            text = placeOfLine(base);
        }
        if (said != nullptr && text == defaultText(property)) {
            text.clear();
        }
        assignments.push_back({fullName(property), std::move(text)});
    }
    return assignments;
}

}  // namespace control
