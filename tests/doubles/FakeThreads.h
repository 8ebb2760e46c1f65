#pragma once

#include <atomic>

namespace doubles {

/// How many of the next threads cannot be created: the test executable's pthread_create() refuses them.
inline std::atomic<int>& refusedThreads() {
    static std::atomic<int> count{0};
    return count;
}

}  // namespace doubles
