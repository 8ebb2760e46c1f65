#pragma once

#include <functional>

namespace platform {

/// Runs `body` on a detached thread with this name (its first 15 bytes). The thread takes none of the
/// application's signals. Returns false, without running `body`, when no thread can be started. An exception
/// that leaves `body` only ends the thread, with an error in the log.
bool startHelperThread(const char* name, std::function<void()> body);

}  // namespace platform
