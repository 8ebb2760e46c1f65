#include "ProcessCommands.h"

#include "Addressing.h"
#include "Complaint.h"
#include "ProcessInfo.h"
#include "Properties.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"

#include <vector>

namespace control {

namespace {

constexpr std::int32_t VOLUME_UP = 24;
constexpr std::int32_t VOLUME_DOWN = 25;
constexpr std::int32_t PRESSED = 1;

ExitCode send(const platform::ProcessMessage& message, const std::string& what, std::optional<pid_t> process,
              std::ostream& out, std::ostream& err) {
    const platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    if (!directory.error.empty()) {
        return fail(directory.error, err);
    }
    const std::vector<pid_t> all = recipients(directory.path, process);
    if (all.empty()) {
        return fail("no overlay is running: no process listens in " + directory.path, err);
    }
    ExitCode result = SUCCESS;
    for (const pid_t recipient : all) {
        const std::string error = platform::sendMessage(directory.path, recipient, message);
        if (!error.empty()) {
            result = fail(error, err);
        } else {
            out << "Sent " << what << " to process " << recipient << " (" << processName(recipient) << ")\n";
        }
    }
    return result;
}

}  // namespace

ExitCode pressKey(Key key, std::optional<pid_t> process, std::ostream& out, std::ostream& err) {
    platform::ProcessMessage message;
    message.key = {key == Key::DUMP ? VOLUME_UP : VOLUME_DOWN, PRESSED};
    const ExitCode result =
        send(message, key == Key::DUMP ? "the dump key" : "the capture key", process, out, err);
    if (result == SUCCESS && readProperty("debug.kordanix.devmode") != "true") {
        complain("note: keys do nothing outside developer mode; 'kordanixctl set devmode true' turns it on",
                 err);
    }
    return result;
}

ExitCode sendToBackground(std::optional<pid_t> process, std::ostream& out, std::ostream& err) {
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::BACKGROUND;
    return send(message, "the background notice", process, out, err);
}

}  // namespace control
