#include "opengl/entry/SurfaceSizeCache.h"

#include "entry/FrameClock.h"

#include <algorithm>

namespace opengl {

namespace {

constexpr std::int64_t PERIOD_MS = 250;

}  // namespace

const SurfaceSizeCache::Answer& SurfaceSizeCache::look(const WindowLibrary& library, const Swap& swap,
                                                       const Signs& signs, bool isSrgbWanted) {
    const std::int64_t now = entry::nowMs();
    auto known = std::find_if(mKnown.begin(), mKnown.end(),
                              [&](const Known& each) { return each.surface == swap.surface; });
    if (known != mKnown.end() && known->signs == signs && now - known->time < PERIOD_MS) {
        return known->answer;
    }
    if (known == mKnown.end()) {
        known = mKnown.begin() + static_cast<std::ptrdiff_t>(mNext);
        mNext = (mNext + 1) % SURFACES;
        known->surface = swap.surface;
    }
    known->signs = signs;
    known->time = now;
    known->answer.obstacle = library.findObstacle(swap.display, swap.surface);
    if (known->answer.obstacle == nullptr) {
        known->answer.size = library.size(swap.display, swap.surface);
        known->answer.isSrgb = isSrgbWanted && library.isSrgb(swap.display, swap.surface);
    }
    return known->answer;
}

}  // namespace opengl
