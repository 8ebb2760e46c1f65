#pragma once

#include <chrono>
#include <string>

namespace platform {

/// How long a writer waits for another one to be done.
constexpr std::chrono::milliseconds WRITER_PATIENCE(5000);

/// The lock of a runtime directory's properties, held by the one thread of the one process that writes them.
/// The kernel releases it when its holder dies. Each object opens the directory anew, so threads and forked
/// children exclude each other too.
class PropertyLock {
public:
    /// Takes the lock, waiting for at most that long; with 0, without waiting. Check isHeld().
    PropertyLock(const std::string& directory, std::chrono::milliseconds patience);
    ~PropertyLock();
    PropertyLock(const PropertyLock&) = delete;
    PropertyLock& operator=(const PropertyLock&) = delete;

    bool isHeld() const { return mError.empty(); }
    /// Whether it is not held because somebody else holds it.
    bool isBusy() const { return mIsBusy; }
    /// Why the lock is not held, in plain words; of another holder, which process it is if that can be known.
    const std::string& error() const { return mError; }

private:
    int mDirectory = -1;
    bool mIsBusy = false;
    std::string mError;
};

}  // namespace platform
