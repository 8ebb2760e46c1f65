#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace platform {

/// Runs `work` in a forked process, which ends with the result as its exit code.
inline pid_t startChild(const std::function<int()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(60);  // should the parent be gone
        _exit(work());
    }
    return child;
}

/// Waits for the child's end: its exit code, or minus the signal that ended it.
inline int waitForChild(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace platform
