#include "support/ChildProcess.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <thread>

namespace support {

namespace {

constexpr std::chrono::milliseconds POLL_PERIOD{1};

[[noreturn]] void become(const std::vector<std::string>& command,
                         const ChildProcess::Environment& environment, int output, int errors) {
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    closefrom(STDERR_FILENO + 1);
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    execvp(words[0], words.data());
    _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::function<int()>& work) : mProcess(fork()) {
    if (mProcess == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        _exit(work());
    }
}

ChildProcess::ChildProcess(const std::vector<std::string>& command, const Environment& environment)
    : mOutput(memfd_create("output", MFD_CLOEXEC)), mErrors(memfd_create("errors", MFD_CLOEXEC)) {
    mProcess = fork();
    if (mProcess == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        become(command, environment, mOutput, mErrors);
    }
}

ChildProcess::~ChildProcess() {
    // A parent of the program proper passes this on.
    kill(SIGTERM);
    wait(std::chrono::seconds(2));
    for (const int file : {mOutput, mErrors}) {
        if (file >= 0) {
            close(file);
        }
    }
}

void ChildProcess::kill(int signal) const {
    if (!mHasEnded && mProcess > 0) {
        ::kill(mProcess, signal);
    }
}

int ChildProcess::wait(std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (!mHasEnded && mProcess > 0 && waitpid(mProcess, &status, WNOHANG) != mProcess) {
        if (std::chrono::steady_clock::now() >= deadline) {
            kill(SIGKILL);
            waitpid(mProcess, &status, 0);
            mHasEnded = true;
            return HANGS;
        }
        std::this_thread::sleep_for(POLL_PERIOD);
    }
    mHasEnded = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string ChildProcess::contents(int file) {
    std::string text;
    std::array<char, 4096> part;
    for (ssize_t size = 0;
         (size = pread(file, part.data(), part.size(), static_cast<off_t>(text.size()))) > 0;) {
        text.append(part.data(), static_cast<std::size_t>(size));
    }
    return text;
}

Outcome run(const std::vector<std::string>& command, const ChildProcess::Environment& environment) {
    ChildProcess program(command, environment);
    const int status = program.wait();
    return {status, program.output(), program.errors()};
}

int runForked(const std::function<int()>& work) {
    return ChildProcess(work).wait();
}

bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(POLL_PERIOD);
        holds = condition();
    }
    return holds;
}

}  // namespace support
