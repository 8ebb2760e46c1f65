#pragma once

#include <fcntl.h>

#include <string>
#include <string_view>

namespace platform {

/// Opens a regular file and nothing else, without ever waiting: a FIFO, a device or a folder is refused with
/// an error. `flags` are those of open(2); O_CLOEXEC, O_NOCTTY and O_NONBLOCK are added, and O_NOFOLLOW
/// unless `followsLink`: a symbolic link at the end of a path is followed only where the user named that
/// path. Never truncates before it knows what it has: O_TRUNC takes effect after the check. Returns the
/// descriptor, which the caller owns, or -1 with errno set (EINVAL for what is no regular file, ELOOP for a
/// link).
int openPlainFile(const std::string& path, int flags, mode_t mode = 0600, bool followsLink = false);

/// What errno says after openPlainFile() failed, in plain words.
std::string plainFileError(int error);

/// Writes all of it, however many calls that takes, without a signal to the process. Returns 0 or an error
/// number.
int writeAll(int file, std::string_view bytes);

/// Reads a regular file whole, at most `limit` bytes. Returns 0 or an error number; EFBIG when there is more.
int readPlainFile(const std::string& path, std::string& bytes, std::size_t limit, bool followsLink = false);

/// Writes a file aside and renames it into place, so that others find the old bytes or the new ones, whatever
/// happens in between. A link at `path` is replaced, not followed; what is neither a link nor a regular file
/// is left alone (EINVAL, EISDIR). Returns 0 or an error number; then nothing of it is left.
int replaceFile(const std::string& path, std::string_view bytes, mode_t mode = 0600);

}  // namespace platform
