#pragma once

#include "watch/FigureFeed.h"
#include "watch/WatchTarget.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

namespace control {

/// What the page asks of the program. Answers are JSON texts. Any thread.
class ServedProgram {
public:
    explicit ServedProgram(const WatchTarget& target);

    /// Returns an empty text, or why the program cannot be asked.
    std::string open();

    /// The program's name, its figures if they are newer than the refresh that the page has seen, and a
    /// number that changes with the properties.
    std::string figures(std::uint32_t seenRefresh);

    /// Every property with its value, and what is to be known of the figures.
    std::string properties();

    /// Sets the properties in a JSON object of names and texts, all or none. Returns an empty text, or what
    /// is wrong.
    std::string set(const std::string& json);

    /// All settings as they were at the beginning.
    std::string reset();

    /// The next frame as a PNG. Returns an empty text, or why there is none.
    std::string picture(std::string& png) const;

    /// For good, by the program's own end.
    bool hasEnded() const;

private:
    WatchTarget mTarget;
    std::mutex mMutex;  ///< guards what follows, and the writing of properties
    FigureFeed mFeed;
    std::optional<platform::FigureReport> mReport;
    std::chrono::steady_clock::time_point mAsked;
};

}  // namespace control
