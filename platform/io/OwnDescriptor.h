#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace platform {

/// A descriptor of a file or socket that we keep open in somebody else's program. The program may close
/// descriptors it does not know and get their numbers for its own files. So the object remembers the device
/// and the inode, and checks before every use and before the close that the number still stands for them. A
/// race between the check and the use remains. Not for descriptors without an inode of their own (inotify,
/// eventfd, epoll). One thread at a time.
class OwnDescriptor {
public:
    OwnDescriptor() = default;
    /// Takes ownership of an open descriptor; -1 for none.
    explicit OwnDescriptor(int descriptor);
    OwnDescriptor(OwnDescriptor&& other) noexcept;
    OwnDescriptor& operator=(OwnDescriptor&& other) noexcept;
    ~OwnDescriptor();

    /// The number to use right now; -1 when there is none, or when the number now stands for something else.
    int get() const;

    /// Closes the descriptor if it is still ours. Returns 0 or an error number.
    int close();

private:
    int mDescriptor = -1;
    std::uint64_t mDevice = 0;  // not dev_t and ino_t, whose sizes vary with large-file support
    std::uint64_t mInode = 0;
};

}  // namespace platform
