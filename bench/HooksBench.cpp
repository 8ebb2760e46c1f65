#include "CountedLoop.h"
#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "drawers/Drawer.h"
#include "utils/SystemInfoHelper.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

constexpr auto API = static_cast<core::RenderingApiType>(0);

/// Switches the overlay for this process without touching the machine's properties.
void showOverlay(bool isShown) {
    core::StateInfo::isOverlayEnabled(API);  // its first call reads the properties, and no later one does
    core::StateInfo::mStatusProp.mValue = isShown;
    core::StateInfo::mRenderApiProp.mValue = static_cast<int>(API);
    core::StateInfo::mDebugProcessNameProp.parseAndSetValue(utils::getProcessName().c_str());
}

void runHooks(benchmark::State& state, bool isShown) {
    showOverlay(isShown);
    if (core::StateInfo::isOverlayEnabled(API) != isShown) {
        state.SkipWithError("the overlay's switch does not follow");
        return;
    }
    const std::vector<drawer::Drawer*> drawers;
    bench::countedLoop(state, [&drawers] {
        core::StateInfo::onPreSwapBuffers(API);
        core::StateInfo::onPostSwapBuffers(drawers);
    });
}

void HooksOff(benchmark::State& state) {
    runHooks(state, false);
}
void HooksOn(benchmark::State& state) {
    runHooks(state, true);
}

void GetFPS(benchmark::State& state) {
    core::StateInfo info;
    unsigned frames = 0;
    bench::countedLoop(state, [&] { benchmark::DoNotOptimize(info.getFPS(++frames % 16, 120000.0)); });
}

BENCHMARK(HooksOff);
BENCHMARK(HooksOn);
BENCHMARK(GetFPS);

}  // namespace
