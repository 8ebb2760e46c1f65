#include "properties/PropertyFile.h"

#include "io/PlainFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <tuple>

namespace platform {

namespace {

FileVersion versionOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

auto fields(const FileVersion& version) {
    return std::tie(version.time.tv_sec, version.time.tv_nsec, version.size, version.inode, version.device);
}

bool isLater(const timespec& time, const timespec& other) {
    return std::tie(time.tv_sec, time.tv_nsec) > std::tie(other.tv_sec, other.tv_nsec);
}

/// Reads at most `limit` bytes of an open file. Returns 0 or an error number.
int readBytes(int file, std::size_t limit, std::string& bytes) {
    bytes.resize(limit);
    std::size_t size = 0;
    while (size < limit) {
        const ssize_t count = read(file, &bytes[size], limit - size);
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        if (count == 0) {
            break;
        }
        size += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(size);
    return 0;
}

/// Whether the file failed to open because it is not a regular file.
bool isNoPlainFile(int error) {
    return error == EINVAL || error == ELOOP || error == EISDIR;
}

/// Makes the time of a newly written file later than that of the one it replaces, even when the clock is
/// coarse or was set back. Returns 0 or an error number.
int makeLater(int file, const timespec& last) {
    struct stat status = {};
    if (fstat(file, &status) != 0) {
        return errno;
    }
    if (isLater(status.st_mtim, last)) {
        return 0;
    }
    constexpr long NANOSECONDS = 1000000000L;
    timespec time = {last.tv_sec, last.tv_nsec + 1};
    if (time.tv_nsec == NANOSECONDS) {
        time = {last.tv_sec + 1, 0};
    }
    const timespec times[] = {time, time};
    return futimens(file, times) == 0 ? 0 : errno;
}

}  // namespace

bool FileVersion::operator==(const FileVersion& other) const {
    return fields(*this) == fields(other);
}

std::string propertyFilePath(const std::string& directory) {
    return directory + "/properties";
}

FileVersion lookAtPropertyFile(const std::string& directory) {
    struct stat status = {};
    return lstat(propertyFilePath(directory).c_str(), &status) == 0 ? versionOf(status) : FileVersion();
}

ReadResult readPropertyFile(const std::string& directory, PropertyList& list, FileVersion& version,
                            std::string& error) {
    list = {};
    version = lookAtPropertyFile(directory);
    error.clear();
    const std::string path = propertyFilePath(directory);
    const int file = openPlainFile(path, O_RDONLY);
    if (file < 0) {
        const int reason = errno;
        if (reason == ENOENT) {
            version = {};
            return ReadResult::MISSING;
        }
        error = path + ' ' + (isNoPlainFile(reason) ? "" : "cannot be opened: ") + plainFileError(reason);
        return isNoPlainFile(reason) || reason == EACCES ? ReadResult::REFUSED : ReadResult::FAILED;
    }
    struct stat status = {};
    std::string text;
    int reason = fstat(file, &status) == 0 ? 0 : errno;
    const bool isOurs = status.st_uid == geteuid();
    const bool isTooBig = status.st_size > static_cast<off_t>(PROPERTY_TEXT_SIZE_MAX);
    if (reason == 0 && isOurs && !isTooBig) {
        reason = readBytes(file, static_cast<std::size_t>(status.st_size), text);
    }
    close(file);
    if (reason != 0) {
        error = path + " cannot be read: " + plainFileError(reason);
        return ReadResult::FAILED;
    }
    version = versionOf(status);
    error = !isOurs    ? "belongs to another user (id " + std::to_string(status.st_uid) + ")"
            : isTooBig ? "is too big for a property file (" + std::to_string(status.st_size) + " bytes)"
                       : parseProperties(text, list);
    if (!error.empty()) {
        error.insert(0, path + ' ').append(isOurs ? "; it can be deleted, and with it all properties" : "");
        return ReadResult::REFUSED;
    }
    return ReadResult::DONE;
}

std::string writePropertyFile(const std::string& directory, const PropertyList& list,
                              const FileVersion& last) {
    const std::string text = formatProperties(list);
    if (text.size() > PROPERTY_TEXT_SIZE_MAX) {
        return "all properties together have more than " + std::to_string(PROPERTY_TEXT_SIZE_MAX) + " bytes";
    }
    // Always the same name, so that killed writers leave one file at most; the lock keeps other writers out.
    const std::string path = propertyFilePath(directory);
    const std::string draft = path + ".new";
    const auto failure = [&draft](int reason) {
        return "cannot write " + draft + ": " + plainFileError(reason);
    };
    if (unlink(draft.c_str()) != 0 && errno != ENOENT) {
        return failure(errno);
    }
    const int file = openPlainFile(draft, O_WRONLY | O_CREAT | O_EXCL);
    if (file < 0) {
        return failure(errno);
    }
    int reason = writeAll(file, text);
    if (reason == 0) {
        reason = makeLater(file, last.time);
    }
    if (close(file) != 0 && reason == 0) {
        reason = errno;
    }
    if (reason == 0 && std::rename(draft.c_str(), path.c_str()) != 0) {
        reason = errno;
    }
    if (reason != 0) {
        unlink(draft.c_str());
        return failure(reason);
    }
    return {};
}

}  // namespace platform
