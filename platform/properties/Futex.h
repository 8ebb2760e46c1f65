#pragma once

#include <atomic>
#include <cstdint>
#include <ctime>

namespace platform {

/// Sleeps while `word` is `expected`, at most until `deadline` on the monotonic clock (null: for ever).
/// The word may lie in memory shared with other processes and mapped for reading only. Returns 0 or an
/// error number: EAGAIN when the word had another value, EINTR, ETIMEDOUT. May return early for no reason.
int futexWait(const std::atomic<std::uint32_t>& word, std::uint32_t expected, const timespec* deadline);

/// Wakes all who sleep on the word, in every process.
void futexWakeAll(const std::atomic<std::uint32_t>& word);

}  // namespace platform
