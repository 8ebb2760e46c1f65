#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace dumps {

/// A rate of two logs, and whether they differ in it by more than chance.
struct RateDifference {
    std::optional<double> first;   ///< frames per second
    std::optional<double> second;  ///< nothing when the times are all 0
    double change = 0.0;           ///< of the second against the first: -0.1 is 10 % slower

    /// Where the change lies with a probability of 95 %; only meaningful when `isKnown`.
    double low = 0.0;
    double high = 0.0;
    bool isKnown = false;  ///< there are enough frames in the slow part of both to say so

    /// And than 0.05 %, which is told as none.
    bool isMoreThanNoise() const {
        constexpr double LEAST = 0.0005;
        return isKnown && (low > 0.0 || high < 0.0) && (change >= LEAST || change <= -LEAST);
    }
};

/// The fewest frames from which the noise of a rate is told.
constexpr std::size_t FEWEST_FRAMES = 5;

/// Compares the rates over the slowest `shares` (1..0, falling) of two logs' frame times, in the order in
/// which they came; neither may be empty. The interval is by bootstrap: from each log, blocks of frames that
/// follow each other, as long as the root of their number, are drawn at random until there are as many frames
/// again, a thousand times, or a hundred in very long logs. Blocks, because a slow frame is seldom alone. The
/// drawing is the same in each call, on every machine.
std::vector<RateDifference> compareRates(const std::vector<double>& firstMs,
                                         const std::vector<double>& secondMs,
                                         const std::vector<double>& shares);

}  // namespace dumps
