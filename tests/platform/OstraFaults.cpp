#include "platform/OstraFaults.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

bool isMainThread() {
    return syscall(SYS_gettid) == getpid();
}

}  // namespace

extern "C" ssize_t write(int file, const void* bytes, size_t size) {
    while (faults::writeFault == faults::HANGS && !isMainThread()) {
        usleep(1000);
    }
    const int error = faults::writeFault;
    if (error > 0 && !isMainThread()) {
        errno = error;
        return -1;
    }
    return syscall(SYS_write, file, bytes, size);
}

void* operator new(std::size_t size) {
    if (faults::failingAllocations > 0 && !isMainThread() && faults::failingAllocations-- > 0) {
        throw std::bad_alloc();
    }
    void* const memory = std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
