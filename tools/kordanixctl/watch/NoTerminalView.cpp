#include "Diagnostic.h"
#include "watch/TerminalView.h"

namespace control {

// For builds without ncurses.
ExitCode showTerminalView(std::optional<pid_t> /*process*/, std::ostream& err) {
    return fail("this kordanixctl was built without a terminal view; 'watch --json' prints the figures", err);
}

}  // namespace control
