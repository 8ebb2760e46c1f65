#include "overlays/ProcessCommands.h"

#include "Diagnostic.h"
#include "ostra/ProcessSocket.h"
#include "overlays/ChosenOverlays.h"
#include "overlays/DumpAnswers.h"
#include "overlays/OverlayState.h"
#include "processes/ProcessInfo.h"
#include "settings/Properties.h"

#include <vector>

namespace control {

namespace {

// Android's key codes.
constexpr std::int32_t KEYCODE_VOLUME_UP = 24;
constexpr std::int32_t KEYCODE_VOLUME_DOWN = 25;
constexpr std::int32_t ACTION_PRESSED = 1;

/// Sends a message and prints that it did. Returns the processes that took it; sets `result` when one did
/// not.
std::vector<pid_t> send(const ChosenOverlays& overlays, const platform::ProcessMessage& message,
                        const std::string& what, ExitCode& result, std::ostream& out, std::ostream& err) {
    std::vector<pid_t> reached;
    for (const pid_t process : overlays.processes) {
        const std::string error = platform::sendMessage(overlays.directory, process, message);
        if (!error.empty()) {
            result = fail(error, err);
            continue;
        }
        out << "Sent " << what << " to " << describeProcess(process, processName(process)) << '\n';
        reached.push_back(process);
    }
    return reached;
}

}  // namespace

ExitCode pressKey(Key key, std::optional<pid_t> process, std::ostream& out, std::ostream& err) {
    const ChosenOverlays chosen = chooseOverlays(process, Overlay::SHOWN);
    if (!chosen.error.empty()) {
        return fail(chosen.error, err);
    }
    if (displayedValue("devmode") != "true") {
        return fail(
            "keys do nothing outside developer mode, so none was sent; 'kordanixctl set devmode true' turns "
            "it "
            "on",
            err);
    }
    DumpAnswers answers(chosen.directory, chosen.processes);
    platform::ProcessMessage message;
    message.key = {key == Key::DUMP ? KEYCODE_VOLUME_UP : KEYCODE_VOLUME_DOWN, ACTION_PRESSED};
    ExitCode result = SUCCESS;
    const std::vector<pid_t> reached =
        send(chosen, message, key == Key::DUMP ? "the dump key" : "the capture key", result, out, err);
    out.flush();
    if (key == Key::DUMP) {
        const ExitCode answered = answers.await(reached, out, err);
        result = result == SUCCESS ? answered : result;
    }
    return result;
}

ExitCode sendToBackground(std::optional<pid_t> process, std::ostream& out, std::ostream& err) {
    const ChosenOverlays all = chooseListeners(process);
    if (!all.error.empty()) {
        return fail(all.error, err);
    }
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::BACKGROUND;
    ExitCode result = SUCCESS;
    send(all, message, "the background notice", result, out, err);
    return result;
}

}  // namespace control
