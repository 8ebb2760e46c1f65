#include "SetCommand.h"

#include "Properties.h"
#include "PropertyTable.h"
#include "ValueText.h"
#include "properties/PropertyName.h"
#include "properties/SystemProperties.h"

#include <cstddef>

namespace control {

namespace {

struct Assignment {
    std::string name;
    std::string text;
};

/// Appends what is to be written. Returns what is wrong with the name or value, or an empty text.
std::string addAssignment(const std::string& name, const std::string& value, bool isForced,
                          std::vector<Assignment>& assignments) {
    const Property* const property = findProperty(name);
    if (property == nullptr && !isForced) {
        const Property* const nearest = nearestProperty(name);
        return "there is no property '" + name + "'" +
               (nearest == nullptr ? std::string("; see 'kordanixctl list'")
                                   : "; did you mean '" + std::string(nearest->shortName) + "'?") +
               " (--force writes it all the same)";
    }
    const PropertyType type = property == nullptr ? PropertyType::TEXT : property->type;
    const auto text = toPropertyText(type, value);
    if (!text) {
        return "'" + value + "' is no value for '" + name + "'; expected " + std::string(expectedText(type));
    }
    const std::string full = property == nullptr ? expandName(name) : fullName(*property);
    std::string error = platform::propertyNameError(full.c_str());
    if (error.empty()) {
        assignments.push_back({full, *text});
        return {};
    }
    return "'" + full + "': " + error;
}

ExitCode report(const std::string& error, std::ostream& err) {
    if (error.empty()) {
        return SUCCESS;
    }
    err << "kordanixctl: " << error << '\n';
    return FAILURE;
}

}  // namespace

ExitCode setProperties(const std::vector<std::string>& words, const SetOptions& options, std::ostream& err) {
    std::vector<Assignment> assignments;
    ExitCode result = SUCCESS;
    for (std::size_t i = 0; i < words.size(); i += 2) {
        const std::string error = i + 1 == words.size()
                                      ? "'" + words[i] + "' has no value; expected NAME VALUE in turns"
                                      : addAssignment(words[i], words[i + 1], options.isForced, assignments);
        if (!error.empty()) {
            err << "kordanixctl: " << error << '\n';
            result = USAGE_ERROR;
        }
    }
    if (result != SUCCESS) {
        return result;
    }
    for (const Assignment& assignment : assignments) {
        const std::string error = platform::setProperty(assignment.name.c_str(), assignment.text.c_str());
        if (!error.empty()) {
            return report("cannot set " + assignment.name + ", so nothing is published: " + error, err);
        }
    }
    return options.isPublished ? publishProperties(err) : SUCCESS;
}

ExitCode publishProperties(std::ostream& err) {
    const std::string error = publish();
    return report(error.empty() ? error : "cannot publish: " + error, err);
}

ExitCode resetProperties(bool keepsControl, std::ostream& err) {
    for (const Property& property : properties()) {
        const std::string name = fullName(property);
        const bool isKept =
            property.type == PropertyType::GENERATION || (keepsControl && isControlProperty(property));
        if (isKept || !readProperty(name)) {
            continue;
        }
        const std::string error = platform::setProperty(name.c_str(), "");
        if (!error.empty()) {
            err << "kordanixctl: cannot reset " << name << ": " << error << '\n';
            return FAILURE;
        }
    }
    return publishProperties(err);
}

}  // namespace control
