#pragma once

#include <array>
#include <ctime>
#include <string>

namespace platform {

using WatchIdentity = std::array<char, 256>;

/// Sleeps until a file may have been moved into a folder; what happens from the object's making on is not
/// missed. For one thread. The kernel's queue is never read, since the program may have closed the descriptor
/// by then and have its number for something of its own; for the same reason its entry in /proc/self/fdinfo
/// is looked at before it is closed. Where that cannot be seen, and where the kernel has no watch left, the
/// sleep is a quarter of a second. A forked child has no watch of its parent's.
class DirectoryWatch {
public:
    explicit DirectoryWatch(const std::string& directory);
    ~DirectoryWatch();
    DirectoryWatch(const DirectoryWatch&) = delete;
    DirectoryWatch& operator=(const DirectoryWatch&) = delete;

    /// Returns when something was moved in, the folder went, or the deadline on the monotonic clock (null:
    /// none) has passed; sometimes earlier.
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
