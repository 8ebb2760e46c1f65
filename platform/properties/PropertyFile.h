#pragma once

#include "properties/PropertyText.h"

#include <sys/stat.h>

#include <cstdint>
#include <string>

/// The file "properties" of a runtime directory (see PropertyText.h). Nobody writes it in place: each change
/// makes a new file and moves it there. So a reader finds either the old bytes or the new ones, and a writer
/// may be killed at any instant.
namespace platform {

/// Tells two states of the file apart: a new file always has a later time than the one before it.
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
    MISSING,  ///< there is no file, as before the first write
    REFUSED,  ///< not a regular file of this user, or damaged; somebody has to repair it
    FAILED,   ///< for example, the process has no descriptors left; a later attempt may succeed
};

std::string propertyFilePath(const std::string& directory);

/// Returns the version of the file as it is now, readable or not; without a file the size is -1. One system
/// call.
FileVersion lookAtPropertyFile(const std::string& directory);

/// Reads the file. With REFUSED and FAILED, `error` says why in plain words, with the path. `list` is empty
/// unless it returns DONE; `version` is always the file's.
ReadResult readPropertyFile(const std::string& directory, PropertyList& list, FileVersion& version,
                            std::string& error);

/// Replaces the file, whose version is `last`, by one with these properties. Only the holder of the lock may
/// call it (see PropertyLock.h). Returns in plain words what went wrong; then the old file is still there.
std::string writePropertyFile(const std::string& directory, const PropertyList& list,
                              const FileVersion& last);

}  // namespace platform
