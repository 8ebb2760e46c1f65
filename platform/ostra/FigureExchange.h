#pragma once

#include "ostra/FigureReport.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace platform {

/// Hands reports from one thread, which fills them, to another one, which sends them; neither ever waits for
/// the other. Each of them owns one of three reports, and swaps it for the third.
class FigureExchange {
public:
    /// Somebody has asked. Any thread.
    void ask();

    /// Whether somebody has within the last ASKED_FOR_MS. Any thread.
    bool isAsked() const;

    // The filling thread, or several of them one after the other.

    FigureReport& back() { return mReports[mBack]; }

    /// Makes back() the newest report; back() is another one then.
    void handOut();

    /// The newest report. The sending thread.
    const FigureReport& newest();

private:
    static constexpr std::uint32_t INDEX = 3;
    static constexpr std::uint32_t FRESH = 4;  ///< nobody has looked at it

    std::array<FigureReport, 3> mReports;
    std::uint32_t mBack = 0;
    std::uint32_t mFront = 1;
    /// Index of the third one, and FRESH. Acquire and release: the report goes with it.
    std::atomic<std::uint32_t> mMiddle{2};
    std::atomic<std::int64_t> mAskedUntil{0};  ///< in milliseconds; relaxed
};

}  // namespace platform
