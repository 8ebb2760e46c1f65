#pragma once

#include <signal.h>

namespace platform {

/// While it lives, a write on this thread that exceeds the process's file-size limit or meets a closed pipe
/// fails with EFBIG or EPIPE instead of killing the process: it blocks SIGXFSZ and SIGPIPE and discards one
/// that the write raised. A signal that was pending before stays pending. Keeps errno.
class WriteSignalsBlocked {
public:
    WriteSignalsBlocked();
    ~WriteSignalsBlocked();
    WriteSignalsBlocked(const WriteSignalsBlocked&) = delete;
    WriteSignalsBlocked& operator=(const WriteSignalsBlocked&) = delete;

private:
    sigset_t mPrevious = {};
    sigset_t mPending = {};
};

}  // namespace platform
