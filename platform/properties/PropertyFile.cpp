#include "properties/PropertyFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>
#include <utility>

namespace platform {
namespace {

/// A file descriptor that is closed at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : mDescriptor(descriptor) {}
    ~Descriptor() {
        if (mDescriptor >= 0) {
            close(mDescriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return mDescriptor; }
    bool isOpen() const { return mDescriptor >= 0; }

private:
    int mDescriptor;
};

std::string systemError(const std::string& what) {
    return what + ": " + std::generic_category().message(errno);
}

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(descriptor, bytes, size);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        if (written > 0) {
            bytes += written;
            size -= static_cast<std::size_t>(written);
        }
    }
    return true;
}

/// Writes an empty area to the file's place. A half-written file of a killed process is written anew.
std::string createFile(const std::string& path) {
    const auto area = std::make_unique<PropertyArea>();
    formatArea(*area);
    const std::string draft = path + ".new";
    const Descriptor file(open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file.isOpen()) {
        return systemError("cannot create " + draft);
    }
    if (!writeAll(file.get(), reinterpret_cast<const char*>(area.get()), sizeof(*area)) ||
        std::rename(draft.c_str(), path.c_str()) != 0) {
        std::string error = systemError("cannot write " + draft);
        unlink(draft.c_str());
        return error;
    }
    return {};
}

/// What is wrong with the opened file before its bytes are looked at.
std::string fileError(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) {
        return systemError("cannot be looked at");
    }
    if (!S_ISREG(status.st_mode)) {
        return "is not a file";
    }
    if (status.st_uid != geteuid()) {
        return "belongs to another user (id " + std::to_string(status.st_uid) + ")";
    }
    if (status.st_size != static_cast<off_t>(PropertyArea::SIZE)) {
        return "is not a property area: it has " + std::to_string(status.st_size) + " bytes and not " +
               std::to_string(PropertyArea::SIZE);
    }
    return {};
}

PropertyArea* mapFile(const std::string& path, bool writable, std::string& error) {
    // Not blocking, in case somebody put a pipe there.
    const int flags = (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const Descriptor file(open(path.c_str(), flags));
    if (!file.isOpen()) {
        error = errno == ENOENT ? std::string() : systemError("cannot open " + path);
        return nullptr;
    }
    error = fileError(file.get());
    if (!error.empty()) {
        error = path + " " + error;
        return nullptr;
    }
    const int protection = writable ? PROT_READ | PROT_WRITE : PROT_READ;
    void* memory = mmap(nullptr, PropertyArea::SIZE, protection, MAP_SHARED, file.get(), 0);
    if (memory == MAP_FAILED) {
        error = systemError("cannot map " + path);
        return nullptr;
    }
    auto* area = static_cast<PropertyArea*>(memory);
    error = areaError(*area);
    if (!error.empty()) {
        error = path + " " + error + "; it can be deleted, and with it all its properties";
        munmap(memory, PropertyArea::SIZE);
        return nullptr;
    }
    return area;
}

}  // namespace

std::string PropertyFile::path(const std::string& directory) {
    return directory + "/properties";
}

PropertyFile PropertyFile::openForReading(const std::string& directory, std::string& error) {
    PropertyFile file;
    file.mArea = mapFile(path(directory), false, error);
    return file;
}

PropertyFile PropertyFile::openForWriting(const std::string& directory, std::string& error) {
    PropertyFile file;
    file.mIsWritable = true;
    file.mArea = mapFile(path(directory), true, error);
    if (file.mArea == nullptr && error.empty()) {
        error = createFile(path(directory));
        if (error.empty()) {
            file.mArea = mapFile(path(directory), true, error);
        }
        if (file.mArea == nullptr && error.empty()) {
            error = path(directory) + " was removed while it was created";
        }
    }
    return file;
}

PropertyFile::PropertyFile(PropertyFile&& other) noexcept
    : mArea(std::exchange(other.mArea, nullptr)), mIsWritable(other.mIsWritable) {}

PropertyFile& PropertyFile::operator=(PropertyFile&& other) noexcept {
    std::swap(mArea, other.mArea);
    std::swap(mIsWritable, other.mIsWritable);
    return *this;
}

PropertyFile::~PropertyFile() {
    if (mArea != nullptr) {
        munmap(mArea, PropertyArea::SIZE);
    }
}

const PropertyArea* PropertyFile::release() {
    return std::exchange(mArea, nullptr);
}

PropertyLock::PropertyLock(const std::string& directory) {
    mDirectory = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (mDirectory < 0) {
        mError = systemError("cannot open " + directory);
        return;
    }
    while (flock(mDirectory, LOCK_EX) != 0) {
        if (errno != EINTR) {
            mError = systemError("cannot lock " + directory);
            break;
        }
    }
}

PropertyLock::~PropertyLock() {
    if (mDirectory >= 0) {
        // Said explicitly: a child forked meanwhile shares the descriptor, and closing ours keeps the lock.
        flock(mDirectory, LOCK_UN);
        close(mDirectory);
    }
}

}  // namespace platform
