#include "io/PlainFile.h"

#include "io/WriteSignalsBlocked.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <system_error>

namespace platform {

namespace {

int fail(int descriptor, int error) {
    close(descriptor);
    errno = error;
    return -1;
}

}  // namespace

int openPlainFile(const std::string& path, int flags, mode_t mode, bool followsLink) {
    const bool isTruncated = (flags & O_TRUNC) != 0;
    const int allFlags =
        (flags & ~O_TRUNC) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | (followsLink ? 0 : O_NOFOLLOW);
    const int descriptor = open(path.c_str(), allFlags, mode);
    if (descriptor < 0) {
        // ENXIO: a FIFO without a reader.
        errno = errno == ENXIO ? EINVAL : errno;
        return -1;
    }
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) {
        return fail(descriptor, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return fail(descriptor, S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    if (isTruncated && status.st_size > 0 && ftruncate(descriptor, 0) != 0) {
        return fail(descriptor, errno);
    }
    return descriptor;
}

std::string plainFileError(int error) {
    switch (error) {
        case EINVAL:
            return "is not a regular file";
        case ELOOP:
            return "is a symbolic link, which is not followed";
        default:
            return std::generic_category().message(error);
    }
}

int writeAll(int file, std::string_view bytes) {
    const WriteSignalsBlocked blocked;
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return 0;
}

int readPlainFile(const std::string& path, std::string& bytes, std::size_t limit, bool followsLink) {
    bytes.clear();
    const int file = openPlainFile(path, O_RDONLY, 0, followsLink);
    if (file < 0) {
        return errno;
    }
    std::array<char, 16384> part;
    struct stat status = {};
    int error = fstat(file, &status) == 0 && static_cast<std::uint64_t>(status.st_size) > limit ? EFBIG : 0;
    while (error == 0) {
        const ssize_t size = read(file, part.data(), part.size());
        if (size == 0) {
            break;
        }
        if (size < 0) {
            error = errno == EINTR ? 0 : errno;
        } else if (bytes.size() + static_cast<std::size_t>(size) > limit) {
            error = EFBIG;
        } else {
            bytes.append(part.data(), static_cast<std::size_t>(size));
        }
    }
    close(file);
    return error;
}

int replaceFile(const std::string& path, std::string_view bytes, mode_t mode) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    }
    const std::string part = path + '.' + std::to_string(getpid()) + ".part";
    unlink(part.c_str());
    const int file = openPlainFile(part, O_WRONLY | O_CREAT | O_EXCL, mode);
    if (file < 0) {
        return errno;
    }
    int error = writeAll(file, bytes);
    if (close(file) != 0 && error == 0) {
        error = errno;
    }
    if (error == 0 && std::rename(part.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        unlink(part.c_str());
    }
    return error;
}

}  // namespace platform
