#pragma once

#include <array>
#include <ctime>
#include <string>

namespace platform {

using WatchIdentity = std::array<char, 256>;

/// Sleeps until somebody may have moved a file into a folder; misses no move since the object was made. For
/// one thread. The program may close the descriptor and get its number for something of its own. So the
/// object never reads the kernel's queue, and looks at the descriptor's entry in /proc before it closes it.
/// Where /proc does not show that, or the kernel has no watch left, a sleep lasts a quarter of a second. A
/// forked child has none of its parent's watches.
class DirectoryWatch {
public:
    explicit DirectoryWatch(const std::string& directory);
    ~DirectoryWatch();
    DirectoryWatch(const DirectoryWatch&) = delete;
    DirectoryWatch& operator=(const DirectoryWatch&) = delete;

    /// Returns when somebody moved something in, the folder is gone, or the deadline on the monotonic clock
    /// (null: none) has passed; sometimes earlier.
    void sleep(const timespec* deadline) const;

    /// Sleeps for a quarter of a second, or until the deadline.
    static void sleepWithoutWatch(const timespec* deadline);

private:
    static void closeInherited();

    bool isSound() const;

    int mDescriptor = -1;
    WatchIdentity mIdentity = {};  ///< what the kernel says of the descriptor
};

}  // namespace platform
