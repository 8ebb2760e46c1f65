#include "properties/SetCommand.h"

#include "Diagnostic.h"
#include "properties/InitialProperties.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SystemProperties.h"
#include "runs/OverlayClaim.h"
#include "settings/KeyConflicts.h"
#include "settings/Presets.h"
#include "settings/Properties.h"
#include "settings/PropertyTable.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace control {

ExitCode writeAssignments(const std::vector<Assignment>& assignments, bool isPublished, std::ostream& err) {
    const auto textOf = [&](const std::string& name) {
        const auto last = std::find_if(assignments.rbegin(), assignments.rend(),
                                       [&](const Assignment& each) { return each.name == name; });
        return last == assignments.rend() ? readProperty(name) : std::optional(last->text);
    };
    for (const Assignment& assignment : assignments) {
        const std::string conflict = keyConflict(assignment.name, textOf);
        if (!conflict.empty()) {
            return fail("nothing was set: " + conflict, err, USAGE_ERROR);
        }
    }
    std::vector<std::pair<std::string, std::string>> all;
    all.reserve(assignments.size() + 1);
    for (const Assignment& assignment : assignments) {
        all.emplace_back(assignment.name, assignment.text);
    }
    if (isPublished) {
        all.emplace_back(std::string(GENERATION_NAME), nextGeneration());
    }
    const std::string error = platform::setProperties(all);
    return failUnlessEmpty(error.empty() ? error : "nothing was set: " + error, err);
}

ExitCode setProperties(const std::vector<std::string>& words, const SetOptions& options, std::ostream& err) {
    std::vector<Assignment> assignments(words.size() / 2);
    ExitCode result = SUCCESS;
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
        std::string error = readAssignment(words[i], words[i + 1], options.isForced, assignments[i / 2]);
        if (!error.empty() && findProperty(words[i]) == nullptr && !options.isForced) {
            error += " (--force writes it all the same)";
        }
        result = error.empty() ? result : fail(error, err, USAGE_ERROR);
    }
    if (words.size() % 2 != 0) {
        result = fail("'" + words.back() + "' has no value; expected NAME VALUE in turns", err, USAGE_ERROR);
    }
    return result == SUCCESS ? writeAssignments(assignments, options.isPublished, err) : result;
}

ExitCode publishProperties(std::ostream& err) {
    return writeAssignments({}, true, err);
}

ExitCode resetProperties(bool keepsControl, std::ostream& err) {
    PropertyTexts beginning =
        readInitialProperties(platform::openRuntimeDirectory().path).value_or(PropertyTexts());
    // The process that claimed the overlay wrote its name and API, which a reset restores.
    for (const auto& [name, claimed] : {std::pair{"debug.kordanix.proc", platform::CLAIM_NAME_PROPERTY},
                                        {"debug.kordanix.api", platform::CLAIM_API_PROPERTY}}) {
        if (auto text = readProperty(claimed)) {
            beginning[name] = *std::move(text);
        }
    }
    std::vector<Assignment> changes;
    if (readProperty(PRESET_PROPERTY).value_or(std::string()) != beginning[PRESET_PROPERTY]) {
        changes.push_back({PRESET_PROPERTY, beginning[PRESET_PROPERTY]});
    }
    for (const Property& property : properties()) {
        const std::string name = fullName(property);
        const bool isKept =
            property.type == PropertyType::GENERATION || (keepsControl && isControlProperty(property));
        if (!isKept && readProperty(name).value_or(std::string()) != beginning[name]) {
            changes.push_back({name, beginning[name]});
        }
    }
    return writeAssignments(changes, true, err);
}

}  // namespace control
