#include "properties/PresetCommand.h"

#include "Diagnostic.h"
#include "overlays/ChosenOverlays.h"
#include "properties/InitialProperties.h"
#include "properties/Notices.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"
#include "settings/Presets.h"
#include "settings/Properties.h"

#include <vector>

namespace control {

ExitCode switchPreset(const std::string& name, std::ostream& out, std::ostream& err) {
    const std::string wrong = name.empty() ? std::string() : presetError(name);
    if (!wrong.empty()) {
        return fail(wrong, err, USAGE_ERROR);
    }
    const std::string nobody = whyNobodyRuns(std::nullopt);
    if (!nobody.empty()) {
        return fail(nobody, err);
    }
    const std::string chosen =
        name.empty() ? presetAfter(readProperty(PRESET_PROPERTY).value_or(std::string())) : name;
    const PropertyTexts base = readDefaultProperties(platform::openRuntimeDirectory().path);
    std::vector<Assignment> assignments = presetAssignments(chosen, base);
    assignments.push_back(noticeOf("Preset " + chosen));
    const ExitCode written = writeAssignments(assignments, true, err);
    if (written == SUCCESS) {
        out << chosen << '\n';
    }
    return written;
}

}  // namespace control
