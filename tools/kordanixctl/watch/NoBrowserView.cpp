#include "Diagnostic.h"
#include "watch/BrowserView.h"

namespace control {

// For builds without a library for HTTP or for PNG files.
ExitCode showBrowserView(std::optional<pid_t> /*process*/, int /*port*/, std::ostream& err) {
    return fail("this kordanixctl was built without a server", err);
}

}  // namespace control
