#include "watch/BrowserView.h"

#include "Diagnostic.h"
#include "properties/RuntimeDirectory.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr const char* NAME = "kordanix-serve";

}  // namespace

ExitCode showBrowserView(std::optional<pid_t> process, int port, std::ostream& err) {
    std::error_code failure;
    const fs::path program = fs::read_symlink("/proc/self/exe", failure);
    if (failure) {
        return fail(
            "cannot read /proc/self/exe, which " + std::string(NAME) + " is near to: " + failure.message(),
            err);
    }
    const std::string directory = platform::openRuntimeDirectory().path;
    // In its environment it would make it a part of the run.
    unsetenv("KORDANIX_RUNTIME_DIR");  // NOLINT(concurrency-mt-unsafe): the header says so
    const std::string portText = std::to_string(port);
    const std::string processText = process ? std::to_string(*process) : std::string();
    int error = ENOENT;
    // Installed, or in the folder of a build.
    for (const char* const folder : {KORDANIX_LIBEXEC_FROM_BIN "/kordanix", "."}) {
        const fs::path path = program.parent_path() / folder / NAME;
        execl(path.c_str(), NAME, directory.c_str(), portText.c_str(),
              process ? processText.c_str() : nullptr, nullptr);
        error = errno == ENOENT ? error : errno;
    }
    return fail(std::string(NAME) +
                    ", which serves the page, cannot be started: " + std::generic_category().message(error),
                err);
}

}  // namespace control
