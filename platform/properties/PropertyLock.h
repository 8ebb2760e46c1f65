#pragma once

#include <chrono>
#include <string>

namespace platform {

/// How long a writer waits for another one.
constexpr std::chrono::milliseconds WRITER_PATIENCE(5000);

/// The lock that a thread holds while it writes a runtime directory's properties. The kernel releases it when
/// the process dies. Each object opens the directory itself, so threads and forked children exclude each
/// other too.
class PropertyLock {
public:
    /// Waits at most `patience` for the lock; with 0 it does not wait. Check isHeld().
    PropertyLock(const std::string& directory, std::chrono::milliseconds patience);
    ~PropertyLock();
    PropertyLock(const PropertyLock&) = delete;
    PropertyLock& operator=(const PropertyLock&) = delete;

    bool isHeld() const { return mError.empty(); }
    /// Whether somebody else holds the lock.
    bool isBusy() const { return mIsBusy; }
    /// Why the lock is not held, in plain words; names the process that holds it if that is known.
    const std::string& error() const { return mError; }

private:
    int mDirectory = -1;
    bool mIsBusy = false;
    std::string mError;
};

}  // namespace platform
