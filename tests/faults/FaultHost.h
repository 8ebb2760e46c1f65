#pragma once

#include "faults/HostShared.h"
#include "faults/Publisher.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <memory>
#include <string>
#include <vector>

namespace faults {

constexpr int DUMP_KEY = 24;
constexpr int CAPTURE_KEY = 25;

/// Sanitizers make everything slower: there, fewer repetitions do.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IS_SANITIZED = true;
#else
constexpr bool IS_SANITIZED = false;
#endif

/// A running fault_host with dumps and a log in folders of its own. Its runtime directory is this process's.
class FaultHost {
public:
    /// `device` is a simulated one with GPU counters; empty: none. `prepare` are commands of a shell that run
    /// in a mount namespace of the host's own before it starts; empty: none.
    explicit FaultHost(const std::string& device = "", const std::string& prepare = "");

    HostShared& shared() { return *mShared; }
    pid_t id() const { return mProcess->id(); }
    void kill(int signal) const { mProcess->kill(signal); }

    /// Waits until so many more frames were drawn.
    bool waitForFrames(long count);

    /// Presses a key, or tells that the application went to the background; empty, or what went wrong.
    std::string press(int code) const;
    std::string sendToBackground() const;

    /// Starts or ends a dump; false when that does not happen.
    bool setDumping(bool isDumping);

    /// Publishes something that the host can be seen to follow; false when it does not.
    bool follows();

    bool startChild(Order order);

    /// Ends in this manner, or is waited for. Returns as ChildProcess::wait().
    int end(End end = End::RETURN);
    int wait() { return mProcess->wait(std::chrono::seconds(10)); }

    /// Entries of a folder of this process below /proc, such as "fd".
    std::size_t entries(const char* folder) const;
    std::size_t residentPages() const;

    /// The lines written to its log so far that have this text in them.
    std::vector<std::string> logged(const std::string& text) const;

    /// What is wrong with the dumps: promised frames that are missing, frames that are doubled, rows that are
    /// not whole. Empty when nothing is.
    std::string dumpError() const;

private:
    const support::TemporaryDirectory mFolder;
    std::shared_ptr<HostShared> mShared;
    std::unique_ptr<support::ChildProcess> mProcess;
};

}  // namespace faults
