// Everything at random that can happen to an overlay, for a long time: settings published by other processes,
// a surface that turns, captures, dumps, notices of the background, layers that detach. Ends with a table of
// what happened, and with exit code 1 when memory or files grew, or when a dump lacks a frame. Started by
// scripts/soak.sh, which says where properties are.
//   kordanix-soak SECONDS

#include "faults/FaultHost.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <random>
#include <thread>
#include <tuple>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr rlim_t ADDRESS_SPACE_CEILING = rlim_t{1024} * 1024 * 1024;
constexpr std::size_t RESIDENT_CEILING_KIB = 64 * 1024;
/// What the highest resident memory after the warm-up may have over the highest one before its end.
constexpr std::size_t RESIDENT_TOLERANCE_KIB = 1024;
constexpr std::size_t KIB_PER_PAGE = 4;
constexpr double WARM_UP_S = 60.0;
/// A publisher lasts for a minute at the most.
constexpr double PUBLISHER_S = 30.0;
constexpr std::chrono::milliseconds STEP{5};

/// Highest resident memory and fewest open files of some time: files that a thread happens to read come and
/// go, those that are forgotten stay.
struct Watermarks {
    std::size_t resident = 0;  ///< KiB
    std::size_t files = SIZE_MAX;

    void add(const faults::FaultHost& host) {
        resident = std::max(resident, host.residentPages() * KIB_PER_PAGE);
        files = std::min(files, host.entries("fd"));
    }
};

}  // namespace

int main(int argc, char** argv) {
    const double seconds = argc == 2 ? std::atof(argv[1]) : 0.0;
    const rlimit ceiling = {ADDRESS_SPACE_CEILING, ADDRESS_SPACE_CEILING};
    const std::string error = faults::showOverlay();
    if (!(seconds > 0.0) || !error.empty() || setrlimit(RLIMIT_AS, &ceiling) != 0) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 2;
    }
    faults::FaultHost host("adreno-c32");
    if (!host.waitForFrames(100)) {
        return 2;
    }
    faults::HostShared& shared = host.shared();
    std::map<std::string, std::size_t> counts;
    std::mt19937 random(20);
    const auto happens = [&](unsigned oneOf, const char* what) {
        const bool is = random() % oneOf == 0;
        counts[what] += is ? 1 : 0;
        return is;
    };
    std::optional<faults::Publisher> publisher;
    Watermarks before;
    Watermarks after;
    double nextSample = 0.0;
    double nextPublisher = 0.0;
    int opacity = 0;
    const auto start = Clock::now();
    for (double now = 0.0; now < seconds; now = std::chrono::duration<double>(Clock::now() - start).count()) {
        if (now >= nextPublisher) {
            publisher.reset();
            publisher.emplace(random(), true, std::chrono::milliseconds(40));
            nextPublisher = now + PUBLISHER_S;
        }
        if (happens(200, "new sizes of the surface")) {
            ++shared.size;
        }
        if (happens(60, "presses of the capture key")) {
            host.press(faults::CAPTURE_KEY);
        }
        if (happens(40, "presses of the dump key")) {
            host.press(faults::DUMP_KEY);
        }
        if (happens(300, "layers detached and attached")) {
            shared.reattach = 1;
        }
        if (happens(300, "notices of the background")) {
            host.sendToBackground();
        }
        std::this_thread::sleep_for(STEP);
        counts["looks that found it shown"] += shared.isShown ? 1 : 0;
        const int lastOpacity = std::exchange(opacity, shared.opacity.load());
        counts["new settings seen"] += opacity != lastOpacity ? 1 : 0;
        if (now >= nextSample) {
            (now < std::min(WARM_UP_S, seconds / 3.0) ? before : after).add(host);
            nextSample = now + 0.5;
        }
    }
    publisher.reset();
    counts["frames"] = static_cast<std::size_t>(shared.frames);
    counts["dumps"] = shared.dumpCount;
    counts["highest memory, warm-up (KiB)"] = before.resident;
    counts["highest memory, from then on"] = after.resident;
    counts["open files, warm-up"] = before.files;
    counts["open files, from then on"] = after.files;
    for (const auto& [what, count] : counts) {
        std::printf("%-32s %10zu\n", what.c_str(), count);
    }
    const bool isSteady =
        after.resident <= before.resident + RESIDENT_TOLERANCE_KIB && after.resident <= RESIDENT_CEILING_KIB;
    const bool hasEnded = host.end() == 0 && shared.tornTexts == 0;
    const bool isBusy =
        counts["dumps"] > 0 && counts["looks that found it shown"] > 0 && counts["new settings seen"] > 0;
    const std::string lacking = host.dumpError();
    const std::tuple<bool, const char*, const char*> verdicts[] = {
        {isSteady, "Memory does not grow (by 1 MiB at the most) and stays below 64 MiB.", "MEMORY GROWS."},
        {after.files <= before.files, "Open files do not grow.", "OPEN FILES GROW."},
        {hasEnded && isBusy, "The overlay was shown and dumped.",
         "IT DID NOT RUN TO ITS END, or nothing was shown or dumped."},
        {lacking.empty(), "Every dump has all its frames.", lacking.c_str()}};
    int status = 0;
    for (const auto& [isKept, yes, no] : verdicts) {
        std::puts(isKept ? yes : no);
        status = isKept ? status : 1;
    }
    return status;
}
