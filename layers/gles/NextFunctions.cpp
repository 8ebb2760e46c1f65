#include "gles/NextFunctions.h"

#include <atomic>

namespace gles {

namespace {

void* gLayer = nullptr;
std::atomic<GetNext> gNext{nullptr};

}  // namespace

void setNext(void* layer, GetNext next) {
    // The loader does this under a lock of its own, before any other thread can get here.
    if (gNext.load(std::memory_order_relaxed) == nullptr) {
        gLayer = layer;
        gNext.store(next, std::memory_order_release);
    }
}

void* findNext(const char* name) {
    const GetNext next = gNext.load(std::memory_order_acquire);
    return next != nullptr ? next(gLayer, name) : nullptr;
}

}  // namespace gles
