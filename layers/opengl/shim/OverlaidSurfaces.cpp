#include "opengl/shim/OverlaidSurfaces.h"

#include <atomic>
#include <cstddef>

namespace opengl {

namespace {

/// A surface whose last frame with the overlay is `clean` frames before the last one. Only the thread that
/// swaps the surface writes `clean`, so relaxed order is enough: what a thread asks about, it swapped itself.
struct Overlaid {
    std::atomic<std::uintptr_t> surface{0};
    std::atomic<int> clean{0};
};

/// With the overlay on more surfaces than these at a time, the rest keep what they redraw in part.
constexpr std::size_t SURFACES = 8;

/// No surface has so many buffers.
constexpr int OLDEST = 64;

Overlaid gSurfaces[SURFACES];

Overlaid* find(std::uintptr_t surface) {
    for (Overlaid& each : gSurfaces) {
        if (each.surface.load(std::memory_order_relaxed) == surface) {
            return &each;
        }
    }
    return nullptr;
}

void add(std::uintptr_t surface) {
    for (Overlaid& each : gSurfaces) {
        std::uintptr_t none = 0;
        if (each.surface.compare_exchange_strong(none, surface, std::memory_order_relaxed)) {
            each.clean.store(0, std::memory_order_relaxed);
            return;
        }
    }
}

}  // namespace

void noteSwap(std::uintptr_t surface, bool hasOverlay) {
    Overlaid* const known = surface != 0 ? find(surface) : nullptr;
    if (known == nullptr) {
        if (hasOverlay && surface != 0) {
            add(surface);
        }
        return;
    }
    const int clean = hasOverlay ? 0 : known->clean.load(std::memory_order_relaxed) + 1;
    known->clean.store(clean, std::memory_order_relaxed);
    if (clean > OLDEST) {
        known->surface.store(0, std::memory_order_relaxed);
    }
}

bool isBufferOverlaid(std::uintptr_t surface, int age) {
    const Overlaid* const known = age > 0 && surface != 0 ? find(surface) : nullptr;
    return known != nullptr && age > known->clean.load(std::memory_order_relaxed);
}

bool isOverlaid(std::uintptr_t surface) {
    return isBufferOverlaid(surface, 1);
}

}  // namespace opengl
