#include "keys/RunKeys.h"

#include "io/PlainFile.h"
#include "keys/KeyActions.h"
#include "keys/KeyListener.h"
#include "ostra/ProcessSocket.h"
#include "overlays/OverlayState.h"
#include "processes/ProcessInfo.h"
#include "settings/PropertyTable.h"

#include <sys/prctl.h>
#include <sys/system_properties.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace control {

namespace {

/// Whether the process is the run's: what it was started with says so, or that it shows the overlay, or its
/// ancestors, since a program may write over its environment.
bool isMember(pid_t process, const std::string& folder, pid_t run) {
    const auto directory = environmentVariable(process, "KORDANIX_RUNTIME_DIR");
    if (directory && !directory->empty()) {
        return *directory == folder;
    }
    const std::vector<pid_t> listening = platform::listeningProcesses(folder);
    if (std::find(listening.begin(), listening.end(), process) != listening.end()) {
        return true;
    }
    while (process > 1 && process != run) {
        process = parentProcess(process).value_or(0);
    }
    return process == run;
}

/// Does it in a process of its own, so that the focus is asked for when a key is pressed, not when the last
/// one's work is done. Nobody waits for it.
void doAside(const std::function<void()>& work) {
    const pid_t listener = getpid();
    if (fork() != 0) {
        return;
    }
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() == listener) {
        work();
    }
    _exit(0);
}

/// What the properties say that the keys do.
std::vector<KeyChords::Binding> keyBindings() {
    std::vector<KeyChords::Binding> bindings;
    for (const std::string_view name : KEY_NAMES) {
        bindings.push_back({static_cast<KeyAction>(bindings.size()), readChord(displayedValue(name)).chord});
    }
    return bindings;
}

/// Empty when there is none.
std::string displayName() {
    const char* const display = std::getenv("DISPLAY");  // NOLINT(concurrency-mt-unsafe): there is one thread
    return display == nullptr ? std::string() : display;
}

}  // namespace

bool areKeysOn() {
    return displayedValue(KEYS_NAME) == "true";
}

std::string describeKeys() {
    constexpr std::chrono::seconds PATIENCE(2);  // on a busy machine a healthy one takes half a second
    constexpr std::string_view HEARD = "heard";
    const std::string display = displayName();
    std::string answer = "DISPLAY is not set";
    if (!display.empty()) {
        answer = SideProcess([&](int output) {
                     const std::string obstacle = keyListenerObstacle();
                     platform::writeAll(output, obstacle.empty() ? HEARD : std::string_view(obstacle));
                 }).finish(PATIENCE);
        answer = answer.empty() ? "the X server does not answer" : answer;
    }
    return answer == HEARD ? "'run' hears keys in the windows of X server " + display
                           : "'run' hears no keys" + (display.empty() ? "" : " on X server " + display) +
                                 ": " + answer + "; a desktop's own shortcuts can call 'kordanixctl toggle'";
}

SideProcess listenForRun(const std::string& folder, platform::RunHold& hold) {
    if (displayName().empty()) {
        return {};
    }
    const pid_t run = getpid();
    return SideProcess([&](int output) {
        hold.forget();
        prctl(PR_SET_NAME, "kordanix-keys");
        KeyTarget target;
        target.isMember = [&](pid_t process) { return isMember(process, folder, run); };
        target.updateBindings = [serial = std::optional<std::uint32_t>()](auto& bindings) mutable {
            const std::uint32_t now = __system_property_area_serial();
            if (std::exchange(serial, now) == now) {
                return false;
            }
            bindings = keyBindings();
            return true;
        };
        const auto perform = [output](KeyAction action) {
            std::ostringstream told;
            performKeyAction(action, told);
            platform::writeAll(output, told.str());
        };
        target.onAction = [perform](KeyAction action) {
            if (!areKeysOn()) {
                return;
            }
            if (takesTime(action)) {
                doAside([&] { perform(action); });
            } else {
                perform(action);
            }
        };
        std::signal(SIGCHLD, SIG_IGN);
        listenForKeys(target);
    });
}

}  // namespace control
