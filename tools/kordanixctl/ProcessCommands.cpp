#include "ProcessCommands.h"

#include "Properties.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <vector>

namespace control {

namespace {

constexpr std::int32_t VOLUME_UP = 24;
constexpr std::int32_t VOLUME_DOWN = 25;
constexpr std::int32_t PRESSED = 1;

ExitCode fail(const std::string& error, std::ostream& err) {
    err << "kordanixctl: " << error << '\n';
    return FAILURE;
}

ExitCode send(const platform::ProcessMessage& message, const std::string& what, std::optional<pid_t> process,
              std::ostream& out, std::ostream& err) {
    const platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    if (!directory.error.empty()) {
        return fail(directory.error, err);
    }
    const std::vector<pid_t> recipients =
        process ? std::vector<pid_t>{*process} : platform::listeningProcesses(directory.path);
    if (recipients.empty()) {
        return fail("no overlay is running: no process listens in " + directory.path, err);
    }
    ExitCode result = SUCCESS;
    for (const pid_t recipient : recipients) {
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
        err << "kordanixctl: note: keys do nothing outside developer mode; "
               "'kordanixctl set devmode true' turns it on\n";
    }
    return result;
}

ExitCode sendToBackground(std::optional<pid_t> process, std::ostream& out, std::ostream& err) {
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::BACKGROUND;
    return send(message, "the background notice", process, out, err);
}

std::string processName(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/cmdline", std::ios::binary);
    // As much as the library reads of its own.
    std::array<char, 256> text{};
    file.getline(text.data(), text.size());
    const std::string_view name(text.data());
    constexpr std::string_view BLANKS = " \t\n\v\f\r";
    const std::size_t first = std::min(name.find_first_not_of(BLANKS), name.size());
    return std::string(name.substr(first, name.find_last_not_of(BLANKS) + 1 - first));
}

}  // namespace control
