#include "FrameClock.h"
#include "Scene.h"
#include "Window.h"

#include <valgrind/callgrind.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Options {
    int warmUp = 200;
    int frames = 2000;
    int rate = 0;
    int pace = 0;
    int width = 1280;
    int height = 720;
    std::string report;
    std::string picture;
};

struct Times {
    std::int64_t swap = 0;          ///< the thread's processor time in the swaps, nanoseconds
    std::int64_t whole = 0;         ///< the same from the first frame's beginning to the last one's end
    std::vector<double> intervals;  ///< from swap to swap, milliseconds of real time
};

/// Measures the frames after the warm-up. Under callgrind it counts exactly these frames and dumps the
/// counts.
Times measure(const Options& options, client::Window& window, client::Scene& scene) {
    using Clock = std::chrono::steady_clock;
    const float aspect = static_cast<float>(options.width) / static_cast<float>(options.height);
    const Clock::duration interval =
        options.pace > 0 ? Clock::duration(std::chrono::seconds(1)) / options.pace : Clock::duration(0);
    Times times;
    std::int64_t start = 0;
    Clock::time_point next = Clock::now();
    Clock::time_point shown = next;
    for (int frame = 0; frame < options.warmUp + options.frames; ++frame) {
        if (frame == options.warmUp) {
            CALLGRIND_START_INSTRUMENTATION;
            start = client::threadTime();
        }
        scene.draw(frame, aspect);
        const std::int64_t before = client::threadTime();
        window.swap();
        const std::int64_t after = client::threadTime();
        if (frame >= options.warmUp) {
            times.swap += after - before;
        }
        if (options.pace > 0) {
            const Clock::time_point now = Clock::now();
            if (frame >= options.warmUp) {
                times.intervals.push_back(std::chrono::duration<double, std::milli>(now - shown).count());
            }
            shown = now;
            next = std::max(next + interval, now);
            std::this_thread::sleep_until(next);
        }
        client::advanceFrameClock();
    }
    times.whole = client::threadTime() - start;
    CALLGRIND_DUMP_STATS_AT("frames");
    CALLGRIND_STOP_INSTRUMENTATION;
    return times;
}

/// The paths of the shared libraries in this process.
std::set<std::string> libraries() {
    std::set<std::string> paths;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos && line.find(".so", path) != std::string::npos) {
            paths.insert(line.substr(path));
        }
    }
    return paths;
}

bool writeReport(const Options& options, const Times& times) {
    const double frames = options.frames;
    std::ofstream file(options.report);
    file << nlohmann::json{{"swap_us", static_cast<double>(times.swap) / frames / 1000.0},
                           {"frame_us", static_cast<double>(times.whole) / frames / 1000.0},
                           {"intervals_ms", times.intervals},
                           {"libraries", libraries()}};
    return file.good();
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{
        "Draws the same frames every time and says what a swap took of its thread's processor time."};
    Options options;
    app.add_option("--warm-up", options.warmUp, "Frames before those that are measured")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--frames", options.frames, "Frames that are measured")->check(CLI::PositiveNumber);
    app.add_option("--rate", options.rate,
                   "Frames a second by the clock that the program sees; 0: the real clock")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--pace", options.pace, "Frames a second of real time; 0: as fast as it runs")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--width", options.width, "Of the window, in pixels")->check(CLI::PositiveNumber);
    app.add_option("--height", options.height, "Of the window, in pixels")->check(CLI::PositiveNumber);
    app.add_option("--report", options.report, "File for the figures (JSON)");
    app.add_option("--picture", options.picture, "File for what the window shows at the end (PPM)");
    CLI11_PARSE(app, argc, argv);

    client::Window window(options.width, options.height);
    client::Scene scene;
    if (options.rate > 0) {
        client::startFrameClock(1'000'000'000 / options.rate);
    }
    const Times times = measure(options, window, scene);
    const bool reported = options.report.empty() || writeReport(options, times);
    const bool pictured = options.picture.empty() || window.writePicture(options.picture);
    return reported && pictured ? EXIT_SUCCESS : EXIT_FAILURE;
}
