#include "properties/ShowCommands.h"

#include "Diagnostic.h"
#include "properties/SystemProperties.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <vector>

namespace control {

namespace {

/// Returns the text of a table cell; an empty text has a stand-in.
std::string cell(const std::string& text) {
    return text.empty() ? "-" : text;
}

std::string meaningOf(const Property& property, const std::optional<std::string>& text) {
    std::string meaning(property.meaning);
    if (text && !isReadable(property, *text)) {
        meaning += " (set to \"" + *text + "\", which cannot be read)";
    }
    return meaning;
}

}  // namespace

ExitCode checkProperties(std::ostream& err) {
    const std::string error = platform::propertyAreaError();
    return error.empty() ? SUCCESS : fail("there are no properties: " + error, err);
}

ExitCode printProperty(const std::string& name, std::ostream& out, std::ostream& err) {
    const Property* const property = findProperty(name);
    const auto text = readProperty(property == nullptr ? expandName(name) : fullName(*property));
    if (!text && property == nullptr) {
        return fail("'" + name + "' is neither set nor a property of the library; " + hintFor(name), err);
    }
    out << (text ? *text : defaultText(*property)) << '\n';
    return SUCCESS;
}

ExitCode printSetProperties(std::ostream& out) {
    for (const Property& property : properties()) {
        const std::string name = fullName(property);
        if (const auto text = readProperty(name)) {
            out << name << ' ' << *text << '\n';
        }
    }
    return SUCCESS;
}

ExitCode listProperties(std::ostream& out) {
    using Line = std::vector<std::string>;
    std::vector<Line> lines = {{"NAME", "VALUE", "DEFAULT", "MEANING"}};
    for (const Property& property : properties()) {
        const auto text = readProperty(fullName(property));
        lines.push_back({std::string(property.shortName), cell(toDisplayText(property, text)),
                         cell(toDisplayText(property, std::nullopt)), meaningOf(property, text)});
    }
    Line::size_type widths[3] = {};
    for (const Line& line : lines) {
        for (std::size_t i = 0; i < std::size(widths); ++i) {
            widths[i] = std::max(widths[i], line[i].size());
        }
    }
    for (const Line& line : lines) {
        for (std::size_t i = 0; i < std::size(widths); ++i) {
            out << std::left << std::setw(static_cast<int>(widths[i]) + 2) << line[i];
        }
        out << line.back() << '\n';
    }
    out << "\nThe properties' full names begin with \"" << PREFIX << "\".\n";
    return SUCCESS;
}

ExitCode listPropertiesAsJson(std::ostream& out) {
    nlohmann::json array = nlohmann::json::array();
    for (const Property& property : properties()) {
        const auto text = readProperty(fullName(property));
        array.push_back({{"name", fullName(property)},
                         {"value", text.value_or(defaultText(property))},
                         {"default", defaultText(property)},
                         {"isSet", text.has_value()},
                         {"meaning", property.meaning}});
    }
    out << array.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    return SUCCESS;
}

}  // namespace control
