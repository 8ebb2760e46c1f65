#include "profiles/Editor.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace control {

namespace {

/// The variables hold a shell's command line, such as "code --wait".
constexpr const char* COMMAND =
    "for e in \"$VISUAL\" \"$EDITOR\" editor nano vi; do"
    "  [ -n \"$e\" ] && command -v \"${e%% *}\" >/dev/null && eval \"exec $e \\\"\\$1\\\"\"; "
    "done; exit 127";

}  // namespace

std::string runEditor(const std::string& path) {
    constexpr int NO_EDITOR = 127;
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        std::signal(SIGXFSZ, SIG_DFL);
        execl("/bin/sh", "sh", "-c", COMMAND, "sh", path.c_str(), static_cast<char*>(nullptr));
        _exit(NO_EDITOR);
    }
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (child < 0) {
        return "cannot start an editor: " + std::generic_category().message(errno);
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == NO_EDITOR) {
        return "there is no editor; EDITOR can name one";
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::string() : "the editor failed";
}

}  // namespace control
