#pragma once

#include <atomic>

/// GPU counters under the test's control, in the place of the library's own source of them: core::HWcounter
/// is defined here. The n-th sample since the test set `reads` to 0 is at n ms, with usage n, vertex activity
/// 0.25 and fragment activity 0.5 / n.
namespace doubles {

struct Counters {
    std::atomic<bool> isReady{true};
    std::atomic<unsigned> reads{0};
    std::atomic<unsigned> failingRead{0};  ///< this one finds no memory
};

inline Counters& counters() {
    static Counters instance;
    return instance;
}

}  // namespace doubles
