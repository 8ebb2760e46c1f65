#include "properties/PresetCommand.h"

#include "Diagnostic.h"
#include "overlays/ChosenOverlays.h"
#include "overlays/OverlayState.h"
#include "properties/InitialProperties.h"
#include "properties/Notices.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"
#include "runs/RunFolder.h"
#include "settings/Presets.h"
#include "settings/Properties.h"

#include <vector>

namespace control {

ExitCode switchPreset(const std::string& name, std::ostream& out, std::ostream& err) {
    const std::string wrong = name.empty() ? std::string() : presetError(name);
    if (!wrong.empty()) {
        return fail(wrong, err, USAGE_ERROR);
    }
    const ChosenOverlays listening = chooseListeners(std::nullopt);
    const bool isRun = platform::runProcess(listening.directory) != 0;
    if (!isRun && !listening.error.empty() && OverlayState(listening.directory).processes().empty()) {
        return fail(listening.error, err);
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
