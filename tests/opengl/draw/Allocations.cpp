#include "opengl/draw/Allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool isCounted = false;
thread_local int count = 0;

}  // namespace

int countAllocations(bool isCounting) {
    isCounted = isCounting;
    if (isCounting) {
        count = 0;
    }
    return count;
}

void* operator new(std::size_t size) {
    count += isCounted ? 1 : 0;
    if (void* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
