#include "dumps/logs/Bootstrap.h"

#include "dumps/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <random>

namespace dumps {

namespace {

/// A thousand drawings of up to 400,000 frames; of longer logs fewer, which take some seconds.
constexpr std::size_t MOST_DRAWINGS = 1000;
constexpr std::size_t FEWEST_DRAWINGS = 100;
constexpr std::size_t FRAMES_TO_DRAW = 400'000'000;

constexpr std::uint64_t SEED = 1;
constexpr double INTERVAL_PERCENT = 95.0;

/// The standard's own distributions differ from library to library; its generator does not.
std::size_t below(std::mt19937_64& random, std::size_t limit) {
    constexpr double SPAN = 9007199254740992.0;  // 2^53, exact in a double
    constexpr unsigned int UNUSED_BITS = 11;
    const double share = static_cast<double>(random() >> UNUSED_BITS) / SPAN;
    return std::min(static_cast<std::size_t>(share * static_cast<double>(limit)), limit - 1);
}

std::size_t framesIn(double share, std::size_t count) {
    return static_cast<std::size_t>(
        std::clamp(std::floor(static_cast<double>(count) * share), 1.0, static_cast<double>(count)));
}

/// Times as far as rates over their slowest shares need them: only the slow ones are there.
struct SlowPart {
    std::size_t count = 0;  ///< of all times
    double total = 0.0;     ///< of all times
    std::vector<double> slow;
};

/// The rates over the slowest shares. False when there are not enough slow times. Orders the slow times.
bool findRates(SlowPart& times, const std::vector<double>& shares,
               std::vector<std::optional<double>>& rates) {
    rates.clear();
    auto candidates = times.slow.end();
    for (const double share : shares) {
        const std::size_t frames = framesIn(share, times.count);
        double total = times.total;
        if (frames < times.count) {
            if (frames > times.slow.size()) {
                return false;
            }
            const auto end = times.slow.begin() + static_cast<std::ptrdiff_t>(frames);
            if (end < candidates) {
                std::nth_element(times.slow.begin(), end, candidates, std::greater<>());
            }
            candidates = end;
            total = std::accumulate(times.slow.begin(), end, 0.0);
        }
        rates.push_back(total > 0.0 ? std::optional(static_cast<double>(frames) * MS_PER_SECOND / total)
                                    : std::nullopt);
    }
    return true;
}

/// Draws frames from a log again and again.
class Drawing {
public:
    /// Both outlive the object.
    Drawing(const std::vector<double>& times, const std::vector<double>& shares)
        : mTimes(times), mShares(shares), mSlow(slowestOf(times, shares)) {}

    /// The rates over the log itself.
    std::vector<std::optional<double>> own() {
        std::vector<std::optional<double>> rates;
        mDrawn = {mTimes.size(), std::accumulate(mTimes.begin(), mTimes.end(), 0.0), mTimes};
        findRates(mDrawn, mShares, rates);
        return rates;
    }

    /// The rates over as many frames as the log has, drawn from it.
    const std::vector<std::optional<double>>& next(std::mt19937_64& random) {
        const std::mt19937_64 before = random;
        draw(random, mSlow);
        if (!findRates(mDrawn, mShares, mRates)) {
            // Hardly ever: more of the slow frames were left out than we have reckoned with.
            random = before;
            draw(random, -std::numeric_limits<double>::infinity());
            findRates(mDrawn, mShares, mRates);
        }
        return mRates;
    }

private:
    /// From where on a time is slow: twice as many times as the largest share needs that is not all.
    static double slowestOf(std::vector<double> times, const std::vector<double>& shares) {
        std::size_t needed = 0;
        for (const double share : shares) {
            const std::size_t frames = framesIn(share, times.size());
            needed = frames < times.size() ? std::max(needed, frames) : needed;
        }
        needed = std::min(2 * needed, times.size() - 1);
        const auto last = times.begin() + static_cast<std::ptrdiff_t>(needed);
        std::nth_element(times.begin(), last, times.end(), std::greater<>());
        return *last;
    }

    /// Draws blocks until there are as many times as before. A block that reaches the end goes on at the
    /// beginning, so that every time is as likely as another.
    void draw(std::mt19937_64& random, double slow) {
        const std::size_t count = mTimes.size();
        const auto length = std::max(
            static_cast<std::size_t>(std::lround(std::sqrt(static_cast<double>(count)))), std::size_t{1});
        mDrawn.count = count;
        mDrawn.total = 0.0;
        mDrawn.slow.clear();
        for (std::size_t drawn = 0; drawn < count;) {
            std::size_t next = below(random, count);
            const std::size_t end = std::min(drawn + length, count);
            for (; drawn < end; ++drawn) {
                mDrawn.total += mTimes[next];
                if (mTimes[next] >= slow) {
                    mDrawn.slow.push_back(mTimes[next]);
                }
                next = next + 1 == count ? 0 : next + 1;
            }
        }
    }

    const std::vector<double>& mTimes;
    const std::vector<double>& mShares;
    double mSlow;
    SlowPart mDrawn;
    std::vector<std::optional<double>> mRates;
};

}  // namespace

std::vector<RateDifference> compareRates(const std::vector<double>& firstMs,
                                         const std::vector<double>& secondMs,
                                         const std::vector<double>& shares) {
    Drawing first(firstMs, shares);
    Drawing second(secondMs, shares);
    std::vector<RateDifference> differences(shares.size());
    const auto firstRates = first.own();
    const auto secondRates = second.own();
    const std::size_t fewest = std::min(firstMs.size(), secondMs.size());
    for (std::size_t i = 0; i < shares.size(); ++i) {
        RateDifference& difference = differences[i];
        difference.first = firstRates[i];
        difference.second = secondRates[i];
        if (firstRates[i] && secondRates[i]) {
            difference.change = *secondRates[i] / *firstRates[i] - 1.0;
            difference.isKnown = fewest >= FEWEST_FRAMES && framesIn(shares[i], fewest) >= FEWEST_FRAMES;
        }
    }
    std::mt19937_64 random(SEED);
    std::vector<std::vector<double>> changes(shares.size());
    const std::size_t drawings =
        std::clamp(FRAMES_TO_DRAW / (firstMs.size() + secondMs.size()), FEWEST_DRAWINGS, MOST_DRAWINGS);
    for (std::size_t drawing = 0; drawing < drawings; ++drawing) {
        const auto& a = first.next(random);
        const auto& b = second.next(random);
        for (std::size_t i = 0; i < shares.size(); ++i) {
            if (a[i] && b[i]) {
                changes[i].push_back(*b[i] / *a[i] - 1.0);
            }
        }
    }
    for (std::size_t i = 0; i < shares.size(); ++i) {
        if (changes[i].empty()) {
            differences[i].isKnown = false;
            continue;
        }
        std::sort(changes[i].begin(), changes[i].end());
        constexpr double TAIL = (100.0 - INTERVAL_PERCENT) / 2.0;
        differences[i].low = percentile(changes[i], TAIL);
        differences[i].high = percentile(changes[i], 100.0 - TAIL);
    }
    return differences;
}

}  // namespace dumps
