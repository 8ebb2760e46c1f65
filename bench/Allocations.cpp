#include "Allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t counted = 0;

}  // namespace

namespace bench {

std::size_t allocations() {
    return counted;
}

}  // namespace bench

void* operator new(std::size_t size) {
    ++counted;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
