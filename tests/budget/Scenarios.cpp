// The frames whose instructions are counted, see scripts/budget.sh. Nothing here depends on the machine or on
// the moment: properties are the program's own, kernel and driver files those below the working directory,
// the clock advances by a frame's length a frame, the companion library only notes what it is told, and
// nothing runs on other threads.
//   budget_scenarios SCENARIO FRAMES    draws so many frames

#include "NullFactory.h"
#include "core/StateInfo.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeOstra.h"
#include "doubles/FixedPasses.h"
#include "doubles/Settings.h"
#include "gui/WidgetsSettings.h"
#include "scene/Overlay.h"
#include "utils/SystemInfoHelper.h"

#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

extern "C" std::FILE* fopen(const char* path, const char* mode) {
    static const auto realOpen = reinterpret_cast<decltype(&fopen)>(dlsym(RTLD_NEXT, "fopen"));
    return realOpen(path + 1, mode);
}

namespace {

constexpr std::int64_t FRAME_US = 16000;
constexpr long CAPTURE_FRAME = 9;
constexpr long DUMP_FRAME = 12;

struct Scenario {
    const char* name;
    std::vector<std::pair<std::string, std::string>> settings;
    bool isCapturing;
    bool isDumping;
    std::size_t fewestPerFrame;  ///< meshes and texts that are drawn at least
    bool hasCounters = true;     ///< of the GPU, in whose place the frame times stand
};

// Everything there is, except for the one figure that is read on a thread of its own.
const decltype(Scenario::settings) ALL_WIDGETS = {{"widget_memory", "true"},
                                                  {"widget_memory_pss", "false"},
                                                  {"widget_cpu_gpu_gpu_freq", "true"},
                                                  {"widget_frame_time", "false"}};

// The frame rate alone.
const decltype(Scenario::settings) FPS_WIDGET = {
    {"widget_cpu_gpu", "false"}, {"widget_gpu_activity", "false"}, {"widget_frame_time", "false"}};

const Scenario SCENARIOS[] = {
    {"off", {{"status", "false"}}, false, false, 0},
    {"on", FPS_WIDGET, false, false, 4},
    {"strip", {{"widget_cpu_gpu", "false"}, {"widget_gpu_activity", "false"}}, false, false, 10, false},
    {"all", ALL_WIDGETS, true, false, 40},
    {"dump", ALL_WIDGETS, true, true, 40},
};

/// Whether the run was one of the scenario.
bool run(const Scenario& scenario, long frames) {
    doubles::setWallClock(1700000000000000);
    doubles::set({{"status", "true"}, {"proc", "budget"}, {"devmode", "true"}});
    doubles::set(scenario.settings);
    gui::WidgetsSettings::isInited = true;  // no watcher: nothing is published
    gui::WidgetsSettings::getWidgets();

    bench::NullFactory factory;
    doubles::FixedPasses passes(8, {700, 123456, 7890});
    scene::Overlay overlay(factory, core::RenderingApiType::OPENGL_ES, &passes);
    if (!scenario.hasCounters) {
        core::StateInfo::mVendor = utils::Vendor::UNKNOWN;
    }
    overlay.attach();
    for (long i = 0; i < frames; ++i) {
        if (i == CAPTURE_FRAME && scenario.isCapturing) {
            doubles::companion().keyEvents = {{25, 1}};
        }
        if (i == DUMP_FRAME && scenario.isDumping) {
            doubles::companion().keyEvents = {{24, 1}};
        }
        doubles::advanceWallClock(FRAME_US);
        overlay.beginFrame();
        overlay.draw();
        overlay.endFrame();
        if (i == CAPTURE_FRAME) {
            // The capture's thread, which finds no counters, is over before the next frame asks for it.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
    const std::size_t perFrame =
        (factory.drawn.meshes + factory.drawn.texts) / static_cast<std::size_t>(frames);
    return (scenario.fewestPerFrame == 0 ? perFrame == 0 : perFrame >= scenario.fewestPerFrame) &&
           core::StateInfo::isDumpingEnabled() == scenario.isDumping;
}

}  // namespace

int main(int argc, char** argv) {
    for (const Scenario& scenario : SCENARIOS) {
        if (argc == 3 && scenario.name == std::string(argv[1])) {
            return run(scenario, std::atol(argv[2])) ? 0 : 3;
        }
    }
    std::fprintf(stderr, "There is no such scenario.\n");
    return 2;
}
