#include "processes/SideProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <utility>

namespace control {

namespace {

using Clock = std::chrono::steady_clock;

/// Leaves what this process shares with its parent: the terminal, the streams and the signals.
void standAside(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        _exit(0);
    }
    setsid();
    std::atexit([] { _exit(1); });  // instead of the handlers of the process that it was forked from
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGTERM, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nothing, stream);
    }
}

}  // namespace

SideProcess::SideProcess(const Work& work) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    const pid_t parent = getpid();
    mProcess = fork();
    if (mProcess == 0) {
        standAside(parent);
        try {
            work(ends[1]);
        } catch (const std::exception&) {
            _exit(1);
        }
        _exit(0);
    }
    close(ends[1]);
    mOutput = ends[0];
}

SideProcess::SideProcess(SideProcess&& other) noexcept
    : mProcess(std::exchange(other.mProcess, -1)), mOutput(std::exchange(other.mOutput, -1)) {}

std::string SideProcess::finish(std::chrono::milliseconds limit) {
    const Clock::time_point due = Clock::now() + limit;
    std::string told;
    std::array<char, 512> bytes = {};
    bool isEnded = false;
    const auto take = [&] {
        ssize_t count = 0;
        while ((count = read(mOutput, bytes.data(), bytes.size())) > 0) {
            told.append(bytes.data(), static_cast<std::size_t>(count));
        }
        isEnded = count == 0 || (errno != EAGAIN && errno != EINTR);
    };
    for (take(); !isEnded; take()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(due - Clock::now());
        pollfd output = {mOutput, POLLIN, 0};
        if (left.count() <= 0 || (poll(&output, 1, static_cast<int>(left.count())) < 0 && errno != EINTR)) {
            break;
        }
    }
    end();
    return told;
}

void SideProcess::end() {
    // Usually at once; a picture that is being fetched is put away first.
    constexpr int LOOKS = 100;
    constexpr useconds_t BETWEEN_LOOKS_US = 10'000;
    if (mProcess > 0 && kill(mProcess, SIGTERM) == 0) {
        pid_t ended = 0;
        for (int look = 0; look < LOOKS && ended == 0; ++look) {
            usleep(look == 0 ? 0 : std::min<useconds_t>(BETWEEN_LOOKS_US, 500U << unsigned(look)));
            ended = waitpid(mProcess, nullptr, WNOHANG);
        }
        if (ended == 0) {
            kill(mProcess, SIGKILL);
            waitpid(mProcess, nullptr, 0);
        }
    }
    mProcess = -1;
    if (mOutput >= 0) {
        close(std::exchange(mOutput, -1));
    }
}

}  // namespace control
