#include "io/OwnDescriptor.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace platform {

OwnDescriptor::OwnDescriptor(int descriptor) : mDescriptor(descriptor) {
    struct stat status = {};
    if (descriptor >= 0 && fstat(descriptor, &status) == 0) {
        mDevice = status.st_dev;
        mInode = status.st_ino;
    }
}

OwnDescriptor::OwnDescriptor(OwnDescriptor&& other) noexcept
    : mDescriptor(std::exchange(other.mDescriptor, -1)), mDevice(other.mDevice), mInode(other.mInode) {}

OwnDescriptor& OwnDescriptor::operator=(OwnDescriptor&& other) noexcept {
    if (this != &other) {
        close();
        mDescriptor = std::exchange(other.mDescriptor, -1);
        mDevice = other.mDevice;
        mInode = other.mInode;
    }
    return *this;
}

OwnDescriptor::~OwnDescriptor() {
    close();
}

int OwnDescriptor::get() const {
    struct stat status = {};
    const bool isOurs = mDescriptor >= 0 && fstat(mDescriptor, &status) == 0 && status.st_dev == mDevice &&
                        status.st_ino == mInode;
    return isOurs ? mDescriptor : -1;
}

int OwnDescriptor::close() {
    const int descriptor = get();
    mDescriptor = -1;
    return descriptor < 0 || ::close(descriptor) == 0 ? 0 : errno;
}

}  // namespace platform
