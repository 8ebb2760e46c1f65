#pragma once

#include "io/OwnDescriptor.h"
#include "runs/RunFolder.h"

#include <atomic>
#include <cstddef>
#include <string>

namespace platform {

/// This process's socket (see ProcessSocket.h), opened again when the program closes its descriptor. In a run
/// it also keeps the run's folder from being removed. One thread at a time, except for remove().
class OwnSocket {
public:
    /// Opens the socket in the runtime directory. Returns an empty text, or why it cannot.
    std::string open();

    /// Undoes open().
    void close();

    /// The runtime directory of an open socket.
    const std::string& directory() const { return mDirectory; }

    /// Waits for a message. Returns its size, which may exceed the buffer's, or -1 when none came: in a run a
    /// wait lasts at most a second.
    ssize_t receive(char* buffer, std::size_t size);

    /// Sends the bytes to the socket at this path, see sendTo(). The receiving thread.
    void send(const std::string& path, const void* bytes, std::size_t size) const;

    /// Removes the socket's file for good. Any thread.
    void remove();

    /// In a forked child: closes the parent's socket and lets go of its run.
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
