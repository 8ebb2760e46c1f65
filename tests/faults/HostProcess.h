#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace faults {

/// What to start, and where.
struct HostOptions {
    std::string runtime;     ///< the runtime directory
    std::string folder;      ///< for the log and, in folders 1, 2, ..., the dumps; exists
    std::string apis = "0";  ///< one layer for each
    std::chrono::microseconds pace{1000};
    std::string device;             ///< a simulated device with GPU counters; empty: none
    std::function<bool()> prepare;  ///< run in the new process first; false: it cannot be done here
};

/// The frames that must be in a dump, first and last; last 0 when there need be none.
using FrameRange = std::pair<unsigned long long, unsigned long long>;

/// A running fault_host. Whatever it is waited for, it is given up on after half a minute: what hangs is a
/// failure and not a test that never ends. One thread, which must be the process's only one when it starts a
/// host.
class HostProcess {
public:
    static constexpr const char* NAME = "fault-host";

    static constexpr int HANGS = -1000;
    static constexpr int CANNOT_BE_PREPARED = 77;

    explicit HostProcess(const HostOptions& options);

    /// Kills what still runs.
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    pid_t id() const { return mProcess; }

    /// Gives a command, see HostMain.cpp.
    void tell(const std::string& command);

    /// Lets so many milliseconds go by without a frame; returns when that has begun.
    void stall(int milliseconds);

    /// Waits until so many more frames were drawn.
    bool waitForFrames(long count);

    /// Asks for a report: values by name, and the dumps. Empty when there is none.
    std::map<std::string, std::string> report();
    const std::vector<FrameRange>& dumps() const { return mDumps; }

    /// Asks until the report has this number, or one that `is` likes. False when that does not happen.
    bool waitFor(const std::string& name, long value) {
        return waitFor(name, [value](long now) { return now == value; });
    }
    bool waitFor(const std::string& name, const std::function<bool(long)>& is);

    /// Tells the host to end in this manner and waits for it. Returns the exit code, minus the signal that
    /// ended the process, or HANGS.
    int end(const std::string& kind = "return");

    /// Waits for the end.
    int wait();

    void kill(int signal) const;

    /// The lines written to standard error so far that have this text in them.
    std::vector<std::string> logged(const std::string& text = "") const;

    /// What is wrong with the dumps, as the last report or end() told them: frames that are missing or
    /// doubled, rows that are not whole. Empty when nothing is. A dump before `from` is not looked at (1 is
    /// the first).
    std::string dumpError(std::size_t from = 1) const;

    /// How many frames are in that dump.
    std::size_t countFrames(std::size_t dump) const;

private:
    std::string dumpFile(std::size_t dump) const;
    std::string readLine();
    std::map<std::string, std::string> parse(const std::string& line);

    std::string mFolder;
    pid_t mProcess = -1;
    int mCommands = -1;
    int mAnswers = -1;
    std::string mText;
    std::vector<FrameRange> mDumps;
};

}  // namespace faults
