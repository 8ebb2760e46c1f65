#include "run/Supervisor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <iterator>

namespace control {

namespace {

constexpr int PASSED_ON[] = {SIGTERM, SIGHUP, SIGCONT, SIGUSR1, SIGUSR2};
constexpr int TERMINAL_STOPS[] = {SIGTSTP, SIGTTIN, SIGTTOU};
constexpr int OTHERS[] = {SIGCHLD, SIGINT, SIGQUIT};

template <std::size_t SIZE>
void add(const int (&signals)[SIZE], sigset_t& set) {
    for (const int signal : signals) {
        sigaddset(&set, signal);
    }
}

template <std::size_t SIZE>
bool contains(const int (&signals)[SIZE], int signal) {
    return std::find(std::begin(signals), std::end(signals), signal) != std::end(signals);
}

/// Returns only on failure, with an error number.
int execute(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));  // the interface is older than const
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    return errno;
}

/// Starts the program. Returns its process, or -1 with errno set.
pid_t start(const std::vector<std::string>& words, const sigset_t& mask, const struct sigaction& onChild) {
    int ends[2];  // a successful execvp() closes them, so the reader gets nothing
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return -1;
    }
    const pid_t child = fork();
    if (child == 0) {
        sigaction(SIGCHLD, &onChild, nullptr);
        pthread_sigmask(SIG_SETMASK, &mask, nullptr);
        const int error = execute(words);
        const ssize_t ignored = write(ends[1], &error, sizeof(error));
        _exit(ignored == sizeof(error) ? 0 : 1);
    }
    int error = child < 0 ? errno : 0;
    close(ends[1]);
    if (child > 0 && read(ends[0], &error, sizeof(error)) != sizeof(error)) {
        error = 0;
    }
    close(ends[0]);
    if (child > 0 && error != 0) {
        waitpid(child, nullptr, 0);
    }
    errno = error;
    return error == 0 ? child : -1;
}

/// Waits for a signal of `set`, which is blocked, and meanwhile lets the attendants do their work. `signals`
/// is a descriptor for the set, or -1: then there is nothing but signals. Returns -1 when another one came
/// first.
int nextSignal(int signals, const sigset_t& set, const Attendants& attendants) {
    if (signals < 0) {
        return sigwaitinfo(&set, nullptr);
    }
    std::vector<pollfd> watched = {{signals, POLLIN, 0}};
    for (const Attendant* const attendant : attendants) {
        watched.push_back({attendant->descriptor(), POLLIN, 0});
    }
    poll(watched.data(), watched.size(), -1);
    for (std::size_t i = 0; i < attendants.size(); ++i) {
        if (watched[i + 1].revents != 0) {
            attendants[i]->attend();
        }
    }
    signalfd_siginfo came = {};
    return read(signals, &came, sizeof(came)) == sizeof(came) ? static_cast<int>(came.ssi_signo) : -1;
}

/// Waits until the program has ended, with the signals of `set` blocked, and returns its status.
int attend(pid_t program, const sigset_t& set, const Attendants& attendants) {
    const int signals = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    while (true) {
        const int signal = nextSignal(signals, set, attendants);
        if (contains(PASSED_ON, signal)) {
            kill(program, signal);
        }
        int status = 0;
        int last = 0;
        while (waitpid(program, &status, WNOHANG | WUNTRACED | WCONTINUED) > 0) {
            if (WIFEXITED(status) || WIFSIGNALED(status)) {
                close(signals);
                return status;
            }
            last = status;
        }
        // When this process stops, the shell takes the terminal back; later it lets both go on.
        if (WIFSTOPPED(last) && contains(TERMINAL_STOPS, WSTOPSIG(last))) {
            raise(SIGSTOP);
        }
    }
}

}  // namespace

ProgramEnd superviseProgram(const std::vector<std::string>& words, const Attendants& attendants) {
    sigset_t set;
    sigset_t mask;
    sigemptyset(&set);
    add(PASSED_ON, set);
    add(TERMINAL_STOPS, set);
    add(OTHERS, set);
    pthread_sigmask(SIG_BLOCK, &set, &mask);
    // If SIGCHLD were ignored, there would be no status to wait for.
    struct sigaction onChild = {};
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &standard, &onChild);

    const pid_t program = start(words, mask, onChild);
    if (program < 0) {
        return {errno, 0};
    }
    for (Attendant* const attendant : attendants) {
        attendant->onStarted(program);
    }
    return {0, attend(program, set, attendants)};
}

ExitCode endAs(int status) {
    if (!WIFSIGNALED(status)) {
        return static_cast<ExitCode>(WEXITSTATUS(status));
    }
    const int signal = WTERMSIG(status);
    prctl(PR_SET_DUMPABLE, 0);
    std::signal(signal, SIG_DFL);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    raise(signal);
    return static_cast<ExitCode>(128 + signal);
}

}  // namespace control
