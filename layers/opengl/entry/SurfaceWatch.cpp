#include "opengl/entry/SurfaceWatch.h"

#include <time.h>

#include <algorithm>

namespace opengl {

namespace {

constexpr std::int64_t PERIOD_MS = 250;

std::int64_t nowMs() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return std::int64_t{time.tv_sec} * 1000 + time.tv_nsec / 1000000;
}

}  // namespace

const SurfaceWatch::Answer& SurfaceWatch::look(const WindowLibrary& library, const Swap& swap,
                                               const std::array<int, 4>& viewport, bool isSrgbWanted) {
    const std::int64_t now = nowMs();
    auto known = std::find_if(mKnown.begin(), mKnown.end(),
                              [&](const Known& each) { return each.surface == swap.surface; });
    if (known != mKnown.end() && known->viewport == viewport && now - known->time < PERIOD_MS) {
        return known->answer;
    }
    if (known == mKnown.end()) {
        known = mKnown.begin() + static_cast<std::ptrdiff_t>(mNext);
        mNext = (mNext + 1) % SURFACES;
        known->surface = swap.surface;
    }
    known->viewport = viewport;
    known->time = now;
    known->answer.size = library.size(swap.display, swap.surface);
    known->answer.isSrgb = isSrgbWanted && library.isSrgb(swap.display, swap.surface);
    return known->answer;
}

}  // namespace opengl
