// The frames whose instructions are counted, see scripts/budget.sh. Nothing here depends on the machine or on
// the moment: files and properties are the program's own, the clock advances by a frame's length a frame, the
// companion library does nothing, and nothing runs on other threads.
//   budget_scenarios prepare FOLDER            writes the files
//   budget_scenarios SCENARIO FRAMES FOLDER    draws so many frames

#include "NullFactory.h"
#include "core/StateInfo.h"
#include "doubles/FakeClock.h"
#include "doubles/FakeProperties.h"
#include "doubles/FixedPasses.h"
#include "gui/WidgetsSettings.h"
#include "scene/Overlay.h"

#include <dlfcn.h>
#include <ostra/Ostra.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// Kernel and driver files are those below the working directory.
extern "C" std::FILE* fopen(const char* path, const char* mode) {
    static const auto realOpen =
        reinterpret_cast<std::FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
    return realOpen(path + 1, mode);
}

namespace {

std::vector<Ostra::KeyEvent> pressedKeys;

}  // namespace

namespace Ostra {

void registerAppBecomeBackgroundListener(std::function<void()> /*listener*/) {}
bool fixClock(unsigned long long /*cpuClock*/, unsigned long long /*gpuClock*/) {
    return true;
}
void unfixClock() {}
std::vector<KeyEvent> receiveKeyEvents() {
    return std::exchange(pressedKeys, {});
}
void startDumping(const std::vector<DumpWidgetMeta>& /*metas*/) {}
void addDump(const FrameDump& /*dump*/) {}
void finishDumping() {}

}  // namespace Ostra

namespace {

constexpr std::int64_t FRAME_US = 16000;
constexpr long CAPTURE_FRAME = 9;
constexpr long DUMP_FRAME = 12;

const std::pair<const char*, std::string> FILES[] = {
    {"proc/self/cmdline", std::string("budget") + '\0'},
    {"proc/self/stat", "4711 (budget) S 1 1 1 0 -1 4194304 500 0 0 0 1234 567 0 0 20 0 3 0 100 1 1\n"},
    {"proc/meminfo",
     "MemTotal:        5800000 kB\nMemFree:          900000 kB\nMemAvailable:    2900000 kB\n"
     "Buffers:           50000 kB\nCached:          2000000 kB\n"},
    {"sys/class/thermal/thermal_zone0/temp", "45000\n"},
    {"sys/devices/system/cpu/possible", "0-7\n"},
    {"sys/kernel/gpu/gpu_busy", "37\n"},
    {"sys/kernel/gpu/gpu_clock", "338000\n"},
    {"sys/kernel/gpu/gpu_freq_table", "100000 200000 338000 585000\n"},
    {"sys/kernel/gpu/gpu_tmu", "52\n"},
    {"sys/kernel/gpu/gpu_model", "Mali-G78\n"},
    {"sys/kernel/gpu/gpu_mem_total", "104857600\n"},
    {"sys/kernel/gpu/gpu_mem_surface", "31457280\n"},
    {"sys/kernel/gpu/gpu_mem_texture", "62914560\n"},
};

int prepare(const std::filesystem::path& folder) {
    for (const auto& [name, content] : FILES) {
        std::filesystem::create_directories((folder / name).parent_path());
        if (!(std::ofstream(folder / name) << content)) {
            return 1;
        }
    }
    return 0;
}

struct Scenario {
    const char* name;
    std::vector<std::pair<const char*, const char*>> settings;
    bool isCapturing;
    bool isDumping;
    std::size_t fewestPerFrame;  ///< meshes and texts that are drawn at least
};

// All widgets with everything in them, except for the one figure that is read on a thread of its own.
#define ALL_WIDGETS                                              \
    {"widget_memory", "true"}, {"widget_memory_pss", "false"}, { \
        "widget_cpu_gpu_gpu_freq", "true"                        \
    }

const Scenario SCENARIOS[] = {
    {"off", {{"status", "false"}}, false, false, 0},
    // The frame rate alone.
    {"on", {{"widget_cpu_gpu", "false"}, {"widget_gpu_activity", "false"}}, false, false, 4},
    {"all", {ALL_WIDGETS}, true, false, 40},
    {"dump", {ALL_WIDGETS}, true, true, 40},
};

/// Whether the run was one of the scenario.
bool isRight(const Scenario& scenario, const bench::NullFactory::Drawn& drawn, long frames) {
    const std::size_t perFrame = (drawn.meshes + drawn.texts) / static_cast<std::size_t>(frames);
    const bool isAsMuch = scenario.fewestPerFrame == 0 ? perFrame == 0 : perFrame >= scenario.fewestPerFrame;
    return isAsMuch && core::StateInfo::isDumpingEnabled() == scenario.isDumping;
}

int run(const Scenario& scenario, long frames) {
    doubles::setWallClock(1700000000000000);
    for (const auto& [name, value] : {std::pair{"status", "true"}, {"proc", "budget"}, {"devmode", "true"}}) {
        doubles::setProperty(std::string("debug.kordanix.") + name, value);
    }
    for (const auto& [name, value] : scenario.settings) {
        doubles::setProperty(std::string("debug.kordanix.") + name, value);
    }
    gui::WidgetsSettings::isInited = true;  // no watcher: nothing is published
    gui::WidgetsSettings::getWidgets();

    bench::NullFactory factory;
    doubles::FixedPasses passes(8, {700, 123456, 7890});
    scene::Overlay overlay(factory, static_cast<core::RenderingApiType>(0), &passes);
    overlay.attach();
    for (long i = 0; i < frames; ++i) {
        if (i == CAPTURE_FRAME && scenario.isCapturing) {
            pressedKeys = {{25, 1}};
        }
        if (i == DUMP_FRAME && scenario.isDumping) {
            pressedKeys = {{24, 1}};
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
    return isRight(scenario, factory.drawn, frames) ? 0 : 3;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string(argv[1]) == "prepare") {
        return prepare(argv[2]);
    }
    if (argc == 4 && chdir(argv[3]) == 0) {
        for (const Scenario& scenario : SCENARIOS) {
            if (scenario.name == std::string(argv[1])) {
                return run(scenario, std::atol(argv[2]));
            }
        }
    }
    std::fprintf(stderr, "There is no such scenario, or no such folder.\n");
    return 2;
}
