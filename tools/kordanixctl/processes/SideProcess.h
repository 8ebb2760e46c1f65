#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>

namespace control {

/// A forked child for work that may hang or end a process, such as talking to an X server. It ends with this
/// process at the latest, has no standard streams and no terminal, and SIGTERM ends it. Make it in a process
/// with one thread.
class SideProcess {
public:
    /// Writes what it has to tell to the descriptor, which never waits for a reader. Nothing that it throws
    /// gets out, and no exit handler runs after it.
    using Work = std::function<void(int output)>;

    SideProcess() = default;  ///< none

    /// None either, when there can be no further process.
    explicit SideProcess(const Work& work);

    ~SideProcess() { end(); }
    SideProcess(const SideProcess&) = delete;
    SideProcess& operator=(const SideProcess&) = delete;
    SideProcess(SideProcess&& other) noexcept;
    SideProcess& operator=(SideProcess&&) = delete;

    /// Waits until the work is done, or for `limit`; then ends it. Returns what it has told.
    std::string finish(std::chrono::milliseconds limit);

private:
    void end();

    pid_t mProcess = -1;
    int mOutput = -1;
};

}  // namespace control
