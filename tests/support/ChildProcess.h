#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace support {

/// A function that runs in a forked child, or a program. When the object ends it is sent SIGTERM, and killed
/// two seconds later; when the thread that made it ends, it is killed. One thread.
class ChildProcess {
public:
    using Environment = std::map<std::string, std::string>;

    static constexpr int HANGS = -1000;

    /// Runs `work`, whose result is the exit status; no exit handler and no destructor runs after it. What it
    /// prints is not captured.
    explicit ChildProcess(const std::function<int()>& work);

    /// Starts a program, which is looked for in PATH, with variables added to this process's environment and
    /// no further descriptors than the standard ones. Its exit status is 127 when there is no such program.
    explicit ChildProcess(const std::vector<std::string>& command, const Environment& environment = {});

    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t id() const { return mProcess; }
    void kill(int signal) const;

    /// Waits for the end: the exit status, minus the signal that ended it, or HANGS, and then it is killed.
    int wait(std::chrono::milliseconds limit = std::chrono::seconds(60));

    /// What a program has written so far.
    std::string output() const { return contents(mOutput); }
    std::string errors() const { return contents(mErrors); }

private:
    static std::string contents(int file);

    pid_t mProcess = -1;
    bool mHasEnded = false;
    int mOutput = -1;
    int mErrors = -1;
};

struct Outcome {
    int status = 0;  ///< as ChildProcess::wait() returns it
    std::string out;
    std::string err;
};

/// Runs a program, or a function in a forked child, to its end.
Outcome run(const std::vector<std::string>& command, const ChildProcess::Environment& environment = {});
int runForked(const std::function<int()>& work);

/// Waits until `condition` holds, for ten seconds at most. Returns whether it does.
bool waitUntil(const std::function<bool()>& condition);

}  // namespace support
