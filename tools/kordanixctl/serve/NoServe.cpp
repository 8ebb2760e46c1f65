#include "Diagnostic.h"
#include "serve/ServeCommand.h"

namespace control {

// For builds without a library for HTTP or for PNG files.
ExitCode servePage(std::optional<pid_t> /*process*/, int /*port*/, std::ostream& /*out*/, std::ostream& err) {
    return fail("this kordanixctl was built without a server", err);
}

}  // namespace control
