#include "Diagnostic.h"
#include "overlays/PictureCommand.h"

namespace control {

// For builds without libpng.
ExitCode savePicture(std::optional<pid_t> /*process*/, const std::string& /*path*/, double /*seconds*/,
                     std::ostream& /*out*/, std::ostream& err) {
    return fail("this kordanixctl was built without PNG files", err);
}

}  // namespace control
