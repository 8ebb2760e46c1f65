#pragma once

#include <functional>

namespace platform {

/// Runs `body` on a detached thread of this name (at most 15 bytes are used). The thread takes none of the
/// application's signals. False when no thread can be had; `body` is then not run. An exception that leaves
/// `body` ends the thread with an error in the log, and nothing else.
bool startHelperThread(const char* name, std::function<void()> body);

}  // namespace platform
