#include "overlays/ToggleCommand.h"

#include "Diagnostic.h"
#include "overlays/ChosenOverlays.h"
#include "overlays/OverlayState.h"
#include "properties/Notices.h"
#include "properties/SetCommand.h"

namespace control {

ExitCode toggleOverlay(std::optional<pid_t> process, std::ostream& out, std::ostream& err) {
    const std::string nobody = whyNobodyRuns(process);
    if (!nobody.empty()) {
        return fail(nobody, err);
    }
    const bool isShown = displayedValue("status") != "true";
    const std::string what = isShown ? "Overlay shown" : "Overlay hidden";
    const ExitCode written =
        writeAssignments({{"debug.kordanix.status", isShown ? "true" : "false"}, noticeOf(what)}, true, err);
    if (written == SUCCESS) {
        out << what << '\n';
    }
    return written;
}

}  // namespace control
