#pragma once

#include <sys/stat.h>

#include <cstdint>

namespace platform {

/// A descriptor of a file or socket that stays open in a process which is not ours. Such a program may close
/// descriptors it does not know and get their numbers for its own files: so the device and inode are
/// remembered, and every use and the close look whether the number still stands for them. Between the look
/// and the use a race remains. Not for descriptors without an inode of their own (inotify, eventfd, epoll).
/// One thread at a time.
class OwnDescriptor {
public:
    OwnDescriptor() = default;
    /// Takes over an open descriptor; -1 for none.
    explicit OwnDescriptor(int descriptor);
    OwnDescriptor(OwnDescriptor&& other) noexcept;
    OwnDescriptor& operator=(OwnDescriptor&& other) noexcept;
    ~OwnDescriptor();

    /// The number to use right now; -1 when there is none, or when it stands for something else by now.
    int get() const;

    /// Closes it if it is still ours. Returns 0 or an error number.
    int close();

private:
    int mDescriptor = -1;
    std::uint64_t mDevice = 0;  // not dev_t and ino_t, whose sizes vary with large-file support
    std::uint64_t mInode = 0;
};

}  // namespace platform
