#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace faults {

/// What the host is to do, and none again when it has done it; or how it ends.
enum class Order { NONE, CHILD_DRAWS, CHILD_EXITS, CHILD_EXECUTES, CHILD_IS_SPAWNED };
enum class End { NONE, RETURN, EXIT, EXIT_ON_A_THREAD, QUICK_EXIT, UNDERSCORE_EXIT };

/// Memory that a fault_host shares with the test which started it; zero at first.
struct HostShared {
    static constexpr std::size_t MAX_DUMPS = 4096;

    /// The frames that must be in a dump; none while `last` is 0.
    struct Dump {
        std::atomic<std::uint64_t> first;
        std::atomic<std::uint64_t> last;
    };

    // Of the host, after each frame.
    std::atomic<long> frames;
    std::atomic<long> tornTexts;  ///< values that were mixtures of two
    std::atomic<bool> isShown;
    std::atomic<bool> isDumping;
    std::atomic<int> opacity;
    std::atomic<int> children;
    std::atomic<int> failedChildren;
    std::atomic<std::size_t> dumpCount;
    std::array<Dump, MAX_DUMPS> dumps;

    // Of the test.
    std::atomic<unsigned> size;  ///< which of its sizes the surface has
    std::atomic<int> stallMs;    ///< lets so many milliseconds go by without a frame
    std::atomic<int> reattach;   ///< detaches and attaches the layer that often, with frames in between
    std::atomic<int> renew;      ///< the same with a layer that is destroyed and made again
    std::atomic<Order> order;
    std::atomic<End> end;
};

}  // namespace faults
