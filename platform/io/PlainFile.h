#pragma once

#include <fcntl.h>

#include <string>
#include <string_view>

namespace platform {

/// Opens a regular file, never anything else, and never waits: it refuses a FIFO, a device or a folder.
/// `flags` are those of open(2); it adds O_CLOEXEC, O_NOCTTY and O_NONBLOCK, and O_NOFOLLOW unless
/// `followsLink`. Follow a symbolic link at the end of a path only where the user named that path. O_TRUNC
/// takes effect only after the check, so that no other file is truncated. Returns the descriptor, which the
/// caller owns, or -1 with errno set (EINVAL when it is not a regular file, ELOOP when it is a link).
int openPlainFile(const std::string& path, int flags, mode_t mode = 0600, bool followsLink = false);

/// Says in plain words what errno means after openPlainFile() failed.
std::string plainFileError(int error);

/// Writes all the bytes, in as many calls as it takes, and raises no signal. Returns 0 or an error number.
int writeAll(int file, std::string_view bytes);

/// Reads a whole regular file. Returns 0 or an error number; EFBIG when it has more than `limit` bytes.
int readPlainFile(const std::string& path, std::string& bytes, std::size_t limit, bool followsLink = false);

/// Writes a new file beside `path` and renames it into place, so that a reader always finds either the old
/// bytes or the new ones. Replaces a link at `path` instead of following it; leaves anything alone that is
/// neither a link nor a regular file (EINVAL, EISDIR). Returns 0 or an error number, and then leaves no new
/// file behind.
int replaceFile(const std::string& path, std::string_view bytes, mode_t mode = 0600);

}  // namespace platform
