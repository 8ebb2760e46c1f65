#pragma once

#include "ostra/FigureReport.h"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

namespace control {

/// The figures of a running program, as long as somebody asks for them (see ostra/FigureReport.h). Has a
/// socket in the runtime directory, which the destructor removes: keep EndSignals around it. One thread.
class FigureFeed {
public:
    FigureFeed(std::string directory, pid_t process);
    ~FigureFeed();
    FigureFeed(const FigureFeed&) = delete;
    FigureFeed& operator=(const FigureFeed&) = delete;

    /// Returns an empty text, or why nobody can be asked.
    std::string open();

    /// Asks, and waits for an answer a moment at most. Returns a report that is newer than the last one, if
    /// there is one by now. Once error() says something there will be none any more.
    std::optional<platform::FigureReport> ask();

    /// Why the program's figures cannot be had, ever; else empty.
    const std::string& error() const { return mError; }

    /// The program has ended.
    bool hasEnded() const { return mHasEnded; }

    /// Since when there has been no new report, or since the beginning.
    std::chrono::steady_clock::time_point lastNews() const { return mLastNews; }

    /// There has been a report.
    bool hasNews() const { return mSeenRefreshes != 0; }

    const std::string& directory() const { return mDirectory; }
    pid_t process() const { return mProcess; }

private:
    bool send();
    std::optional<platform::FigureReport> receive();

    std::string mDirectory;
    pid_t mProcess;
    std::uint32_t mAsker = 0;
    std::string mPath;
    int mSocket = -1;
    std::string mError;
    bool mHasEnded = false;
    bool mHasAnswered = false;
    std::uint32_t mSeenRefreshes = 0;
    std::chrono::steady_clock::time_point mOpened;
    std::chrono::steady_clock::time_point mLastNews;
};

}  // namespace control
