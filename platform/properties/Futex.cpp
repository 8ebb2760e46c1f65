#include "properties/Futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace platform {

// SYS_futex takes the kernel's old timespec, two words of the machine's size.
static_assert(sizeof(timespec) == 2 * sizeof(long),
              "a 64-bit time on a 32-bit machine needs SYS_futex_time64");

int futexWait(const std::atomic<std::uint32_t>& word, std::uint32_t expected, const timespec* deadline) {
    // Unlike FUTEX_WAIT, the bitset form takes an absolute time, which an interrupted wait goes on using.
    const long result =
        syscall(SYS_futex, &word, FUTEX_WAIT_BITSET, expected, deadline, nullptr, FUTEX_BITSET_MATCH_ANY);
    return result == 0 ? 0 : errno;
}

void futexWakeAll(const std::atomic<std::uint32_t>& word) {
    syscall(SYS_futex, &word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

}  // namespace platform
