#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "properties/PropertyText.h"

/// The file "properties" of a runtime directory (see PropertyText.h). It is never written in place: each
/// change makes a new file and moves it there, so that a reader finds the old bytes or the new ones, and a
/// writer may be killed at any instant.
namespace platform {

/// Tells two states of the file apart: of a new one the time is always later than of the one before it.
struct FileVersion {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = -1;
    timespec time = {};

    bool operator==(const FileVersion& other) const;
    bool operator!=(const FileVersion& other) const { return !(*this == other); }
};

enum class ReadResult {
    DONE,
    MISSING,  ///< there is no such file, as before the first write
    REFUSED,  ///< not a regular file of the user's own, or damaged: it stays so until somebody mends it
    FAILED,   ///< the process has no descriptors left, or the like: a later attempt may do better
};

std::string propertyFilePath(const std::string& directory);

/// The file's state as it is now, whatever lies there; that of no file has a size of -1. One system call.
FileVersion lookAtPropertyFile(const std::string& directory);

/// Reads the file. With REFUSED and FAILED, `error` says why in plain words, with the path. Otherwise than
/// with DONE, `list` is empty; `version` is always the file's.
ReadResult readPropertyFile(const std::string& directory, PropertyList& list, FileVersion& version,
                            std::string& error);

/// Puts a file with these properties in the place of that which has the version `last`. Only for the holder
/// of the lock (see PropertyLock.h). Returns what went wrong, in plain words; then the old one is still
/// there.
std::string writePropertyFile(const std::string& directory, const PropertyList& list,
                              const FileVersion& last);

}  // namespace platform
