#pragma once

#include <string>

#include "properties/PropertyArea.h"

namespace platform {

/// The file "properties" of a runtime directory, mapped into the process; the owner of that mapping.
/// The file is written once as a whole under another name and then moved into place, so nobody sees half
/// of one, its blocks are reserved, and a full disk shows when it is made and not as a bus error later.
/// It is never cut or replaced while it exists, which is what keeps the mappings of running processes
/// valid: whoever cuts it by hand ends those processes with a bus error.
class PropertyFile {
public:
    /// Maps the file for reading. When there is none yet, the result is empty and so is `error`; when it
    /// cannot be used (not a plain file of the user's own, of another size, damaged), the result is empty
    /// and `error` says why.
    static PropertyFile openForReading(const std::string& directory, std::string& error);

    /// Maps the file for writing, and creates it when there is none. Only for the holder of the lock.
    static PropertyFile openForWriting(const std::string& directory, std::string& error);

    PropertyFile() = default;
    PropertyFile(PropertyFile&& other) noexcept;
    PropertyFile& operator=(PropertyFile&& other) noexcept;
    ~PropertyFile();

    /// The mapped area, or null.
    const PropertyArea* area() const { return mArea; }
    /// The same, to be written; null unless opened for writing.
    PropertyArea* writableArea() const { return mIsWritable ? mArea : nullptr; }
    /// Gives the mapping away: it then stays until the process ends.
    const PropertyArea* release();

    /// The path of the file in that directory.
    static std::string path(const std::string& directory);

private:
    PropertyArea* mArea = nullptr;
    bool mIsWritable = false;
};

/// The lock of a runtime directory's properties, held by the one thread of the one process that writes
/// them. The kernel releases it when its holder dies. Each object opens the directory anew, so threads
/// and forked children exclude each other too.
class PropertyLock {
public:
    /// Waits for the lock. Check isHeld().
    explicit PropertyLock(const std::string& directory);
    ~PropertyLock();
    PropertyLock(const PropertyLock&) = delete;
    PropertyLock& operator=(const PropertyLock&) = delete;

    bool isHeld() const { return mError.empty(); }
    /// Why the lock cannot be had, in plain words.
    const std::string& error() const { return mError; }

private:
    int mDirectory = -1;
    std::string mError;
};

}  // namespace platform
