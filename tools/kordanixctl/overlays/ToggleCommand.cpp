#include "overlays/ToggleCommand.h"

#include "Diagnostic.h"
#include "overlays/OverlayState.h"
#include "processes/Addressing.h"
#include "properties/Notices.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"

namespace control {

ExitCode toggleOverlay(std::optional<pid_t> process, std::ostream& out, std::ostream& err) {
    const platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    if (!directory.error.empty()) {
        return fail(directory.error, err);
    }
    if (recipients(directory.path, process).empty() && OverlayState(directory.path).processes().empty()) {
        return fail(nobodyListens(directory.path), err);
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
