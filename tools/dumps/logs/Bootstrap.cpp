#include "dumps/logs/Bootstrap.h"

#include "dumps/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>

namespace dumps {

namespace {

constexpr std::size_t DRAWINGS = 1000;
constexpr std::uint64_t SEED = 1;
constexpr double INTERVAL_PERCENT = 95.0;

/// The standard's own distributions differ from library to library; its generator does not.
std::size_t below(std::mt19937_64& random, std::size_t limit) {
    constexpr double SPAN = 9007199254740992.0;  // 2^53, exact in a double
    constexpr unsigned int UNUSED_BITS = 11;
    const double share = static_cast<double>(random() >> UNUSED_BITS) / SPAN;
    return std::min(static_cast<std::size_t>(share * static_cast<double>(limit)), limit - 1);
}

/// Draws blocks until there are as many times as before. A block that reaches the end goes on at the
/// beginning, so that every time is as likely as another.
void draw(const std::vector<double>& times, std::mt19937_64& random, std::vector<double>& drawn) {
    const std::size_t count = times.size();
    const auto length = std::max(static_cast<std::size_t>(std::lround(std::sqrt(static_cast<double>(count)))),
                                 std::size_t{1});
    drawn.clear();
    while (drawn.size() < count) {
        std::size_t next = below(random, count);
        for (std::size_t i = 0; i < length && drawn.size() < count; ++i) {
            drawn.push_back(times[next]);
            next = next + 1 == count ? 0 : next + 1;
        }
    }
}

std::size_t framesIn(double share, std::size_t count) {
    return static_cast<std::size_t>(
        std::clamp(std::floor(static_cast<double>(count) * share), 1.0, static_cast<double>(count)));
}

/// The rates over the slowest shares. Moves the slowest times to the front, no more of them than needed.
std::vector<std::optional<double>> ratesOf(std::vector<double>& times, const std::vector<double>& shares) {
    constexpr double MS_PER_SECOND = 1000.0;
    std::vector<std::optional<double>> rates;
    auto candidates = times.end();
    for (const double share : shares) {
        const std::size_t frames = framesIn(share, times.size());
        const auto end = times.begin() + static_cast<std::ptrdiff_t>(frames);
        if (end < candidates) {
            std::nth_element(times.begin(), end, candidates, std::greater<>());
        }
        candidates = end;
        double total = 0.0;
        std::for_each(times.begin(), end, [&](double time) { total += time; });
        rates.push_back(total > 0.0 ? std::optional(static_cast<double>(frames) * MS_PER_SECOND / total)
                                    : std::nullopt);
    }
    return rates;
}

}  // namespace

std::vector<RateDifference> compareRates(const std::vector<double>& firstMs,
                                         const std::vector<double>& secondMs,
                                         const std::vector<double>& shares) {
    std::vector<double> first = firstMs;
    std::vector<double> second = secondMs;
    std::vector<RateDifference> differences(shares.size());
    const auto firstRates = ratesOf(first, shares);
    const auto secondRates = ratesOf(second, shares);
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
    for (std::size_t drawing = 0; drawing < DRAWINGS; ++drawing) {
        draw(firstMs, random, first);
        draw(secondMs, random, second);
        const auto a = ratesOf(first, shares);
        const auto b = ratesOf(second, shares);
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
