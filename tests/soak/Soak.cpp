// The demo's frame loop as fast as it can, with everything at random that can happen to an overlay: settings
// published by other processes, surfaces that turn, captures, dumps, notices of the background, layers that
// detach. Ends with a table of what happened, and with exit code 1 when memory or files grew, or when a dump
// lacks a frame. Started by scripts/soak.sh, which says where properties and dumps are.
//   fault-host SECONDS

#include "DevicePasses.h"
#include "Landscape.h"
#include "core/StateInfo.h"
#include "faults/Publisher.h"
#include "ostra/DumpNotice.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"
#include "scene/Overlay.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"

#include <ostra/Ostra.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

constexpr rlim_t ADDRESS_SPACE_CEILING = rlim_t{1024} * 1024 * 1024;
constexpr std::size_t RESIDENT_CEILING_KIB = 64 * 1024;
/// What the highest resident memory after the warm-up may have over the highest one before its end.
constexpr std::size_t RESIDENT_TOLERANCE_KIB = 1024;
constexpr double WARM_UP_S = 60.0;
/// A publisher lasts for a minute at the most.
constexpr double PUBLISHER_S = 30.0;

constexpr Ostra::KeyEvent DUMP = {24, 1};
constexpr Ostra::KeyEvent CAPTURE = {25, 1};

constexpr std::pair<std::uint32_t, std::uint32_t> SIZES[] = {{740, 360}, {360, 740}, {1480, 720}, {370, 180},
                                                             {180, 370}, {320, 240}, {64, 64}};

/// What happened, and how often.
using Counts = std::map<std::string, unsigned long long>;

/// Highest resident memory and fewest open files of some time: files that a thread happens to read come and
/// go, those that are forgotten stay.
struct Watermarks {
    std::size_t resident = 0;  ///< KiB
    std::size_t files = std::numeric_limits<std::size_t>::max();

    void add() {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word && word != "VmRSS:";) {
        }
        std::size_t kib = 0;
        status >> kib;
        resident = std::max(resident, kib);
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        files = std::min(files, static_cast<std::size_t>(std::distance(begin(entries), end(entries))));
    }
};

/// Frames that a dump must hold against the rows that are in its file.
class DumpCheck {
public:
    explicit DumpCheck(Counts& counts) : mCounts(counts) {}

    /// Before and after whatever starts or ends a dump.
    void look() {
        const std::uint64_t frame = core::StateInfo::mFrameNumber;
        const bool isDumping = core::StateInfo::isDumpingEnabled();
        if (isDumping && mStart == 0) {
            mStart = frame;
        } else if (!isDumping && mStart != 0) {
            // A notice may have ended it during the last frame.
            end(std::max(frame, mStart + 1) - std::exchange(mStart, 0) - 1);
        }
    }

private:
    void end(std::uint64_t promised) {
        Ostra::finishDumping();  // if the thread that was told of the background has not yet
        const std::string folder =
            platform::readDumpNotice(platform::openRuntimeDirectory().path, getpid())->folder;
        std::ifstream frames(folder + "/frames.csv");
        std::string line;
        std::getline(frames, line);
        std::uint64_t rows = 0;
        while (std::getline(frames, line)) {
            ++rows;
        }
        std::filesystem::remove_all(folder);
        ++mCounts["dumps"];
        mCounts["frames in dumps"] += rows;
        mCounts["frames that dumps lack"] += promised - std::min(rows, promised);
    }

    Counts& mCounts;
    std::uint64_t mStart = 0;  ///< number of the frame before the first one
};

class Soak {
public:
    Soak() { mOverlay.attach(); }

    void frame(double seconds) {
        mLandscape.draw(mSurface.mImage, seconds);
        mSurface.beginOverlay();
        mOverlay.beginFrame();
        mCounts["publications taken over"] += core::StateInfo::isWidgetsUpdated() ? 1 : 0;
        mOverlay.draw();
        mDump.look();
        mOverlay.endFrame();
        mDump.look();
        ++mCounts["frames"];
        mCounts["frames with the overlay"] += mOverlay.isShown() ? 1 : 0;
        something();
    }

    Counts mCounts;

private:
    bool happens(unsigned oneOf) { return mRandom() % oneOf == 0; }

    void something() {
        if (happens(200)) {
            const auto& [width, height] = SIZES[mRandom() % std::size(SIZES)];
            mSurface.resize(width, height);
            ++mCounts["new sizes of the surface"];
        }
        if (happens(60)) {
            send({platform::ProcessMessage::Kind::KEY, CAPTURE});
            ++mCounts["presses of the capture key"];
        }
        if (happens(40)) {
            send({platform::ProcessMessage::Kind::KEY, DUMP});
        }
        if (happens(300)) {
            mOverlay.detach();
            mDump.look();
            mOverlay.attach();
            ++mCounts["layers detached and attached"];
        }
        // Not just when a dump may begin: nobody could tell which frames are in it.
        if (++mFramesSinceKey > 30 && happens(100)) {
            send({platform::ProcessMessage::Kind::BACKGROUND});
            ++mCounts["notices of the background"];
        }
    }

    void send(const platform::ProcessMessage& message) {
        mFramesSinceKey = message.kind == platform::ProcessMessage::Kind::KEY ? 0 : mFramesSinceKey;
        platform::sendMessage(mFolder, getpid(), message);
    }

    const std::string mFolder = platform::openRuntimeDirectory().path;
    std::mt19937 mRandom{20};
    unsigned mFramesSinceKey = 0;
    software::Surface mSurface{740, 360};
    software::SoftwareFactory mFactory{mSurface};
    demo::DevicePasses mPasses;
    demo::Landscape mLandscape;
    DumpCheck mDump{mCounts};
    scene::Overlay mOverlay{mFactory, core::RenderingApiType::OPENGL_ES, &mPasses};
};

}  // namespace

int main(int argc, char** argv) {
    const double seconds = argc == 2 ? std::atof(argv[1]) : 0.0;
    if (!(seconds > 0.0)) {
        return 2;
    }
    const rlimit ceiling = {ADDRESS_SPACE_CEILING, ADDRESS_SPACE_CEILING};
    setrlimit(RLIMIT_AS, &ceiling);
    const std::string error = faults::showOverlay();
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 2;
    }
    const double warmUp = std::min(WARM_UP_S, seconds / 3.0);

    Soak soak;
    std::optional<faults::Publisher> publisher;
    Watermarks before;
    Watermarks after;
    const auto start = Clock::now();
    double nextSample = 0.0;
    double nextPublisher = 0.0;
    unsigned seed = 0;
    for (double now = 0.0; now < seconds; now = std::chrono::duration<double>(Clock::now() - start).count()) {
        if (now >= nextPublisher) {
            publisher.reset();
            publisher.emplace(++seed, true, std::chrono::milliseconds(40));
            nextPublisher = now + PUBLISHER_S;
        }
        soak.frame(now);
        if (now >= nextSample) {
            (now < warmUp ? before : after).add();
            nextSample = now + 0.5;
        }
    }
    publisher.reset();

    Counts& counts = soak.mCounts;
    counts["highest memory, warm-up (KiB)"] = before.resident;
    counts["highest memory, from then on"] = after.resident;
    counts["open files, warm-up"] = before.files;
    counts["open files, from then on"] = after.files;
    for (const auto& [what, count] : counts) {
        std::printf("%-32s %10llu\n", what.c_str(), count);
    }
    const bool isSteady =
        after.resident <= before.resident + RESIDENT_TOLERANCE_KIB && after.resident <= RESIDENT_CEILING_KIB;
    const bool isWhole = counts["frames that dumps lack"] == 0 && counts["dumps"] > 0 &&
                         counts["frames with the overlay"] > 0 && counts["publications taken over"] > 0;
    const std::tuple<bool, const char*, const char*> verdicts[] = {
        {isSteady, "Memory does not grow (by 1 MiB at the most) and stays below 64 MiB.", "MEMORY GROWS."},
        {after.files <= before.files, "Open files do not grow.", "OPEN FILES GROW."},
        {isWhole, "Every dump has all its frames.", "DUMPS LACK FRAMES, or nothing was dumped."}};
    int status = 0;
    for (const auto& [isKept, yes, no] : verdicts) {
        std::puts(isKept ? yes : no);
        status = isKept ? status : 1;
    }
    return status;
}
