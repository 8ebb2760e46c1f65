#pragma once

#include "io/OwnDescriptor.h"
#include "runs/RunFolder.h"

#include <atomic>
#include <cstddef>
#include <string>

namespace platform {

/// This process's socket (see ProcessSocket.h) in a program that may close any descriptor: then it is opened
/// anew. In a run it also keeps the run's folder from being removed. One thread at a time but for remove().
class OwnSocket {
public:
    /// Opens it in the runtime directory. Returns an empty text, or why it cannot be opened.
    std::string open();

    /// Undoes open().
    void close();

    /// The runtime directory of an open socket.
    const std::string& directory() const { return mDirectory; }

    /// Waits for a message. Returns its size, which may be larger than the buffer's, or -1 when none came: in
    /// a run a wait ends after a second at the latest.
    ssize_t receive(char* buffer, std::size_t size);

    /// Removes the socket's file for good. Any thread.
    void remove();

    /// In a forked child: lets go of what is the parent's.
    void forget();

private:
    bool reopen();
    void limitWait() const;

    std::string mDirectory;
    std::string mPath;
    bool mIsInRun = false;
    bool mIsFailureLogged = false;
    OwnDescriptor mSocket;
    RunHold mRun;
    std::atomic<bool> mIsRemoved{false};
};

}  // namespace platform
