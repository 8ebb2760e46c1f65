#include "Demo.h"

#include "DevicePasses.h"
#include "Landscape.h"
#include "Options.h"
#include "Pace.h"
#include "Restart.h"
#include "Settings.h"
#include "SteppedClock.h"
#include "core/RenderingApiType.h"
#include "core/StateInfo.h"
#include "ostra/OwnKeys.h"
#include "scene/Overlay.h"
#include "simulator/DeviceSimulator.h"
#include "software/Png.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

namespace demo {

namespace {

constexpr Ostra::KeyEvent CAPTURE_KEY_PRESSED = {25, 1};

std::string numbered(const std::string& file, std::uint64_t frame) {
    const std::filesystem::path path(file);
    char number[32];
    std::snprintf(number, sizeof(number), "-%06llu", static_cast<unsigned long long>(frame));
    return (path.parent_path() / (path.stem().string() + number + path.extension().string())).string();
}

/// Prints why when it fails.
bool writePicture(const software::Surface& surface, const std::string& file) {
    std::string error;
    if (!software::writePng(surface.mImage, file, error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return false;
    }
    return true;
}

/// Prints a line about once a second.
class Progress {
public:
    void onFrame(double seconds, std::uint64_t frames, bool isShown) {
        if (std::floor(seconds) <= mLastSecond) {
            return;
        }
        const auto now = std::chrono::steady_clock::now();
        const std::chrono::duration<double> passed = now - mLastTime;
        const double rate = static_cast<double>(frames - mLastFrames) / passed.count();
        std::printf("%4.0f s  frame %llu  %.1f frames a second%s\n", seconds,
                    static_cast<unsigned long long>(frames), rate, isShown ? "" : "  overlay off");
        std::fflush(stdout);
        mLastSecond = std::floor(seconds);
        mLastFrames = frames;
        mLastTime = now;
    }

private:
    double mLastSecond = 0.0;
    std::uint64_t mLastFrames = 0;
    std::chrono::steady_clock::time_point mLastTime = std::chrono::steady_clock::now();
};

/// The frame loop: what an application and its layer do around each buffer swap.
bool runFrames(const Options& options) {
    software::Surface surface(options.width, options.height);
    software::SoftwareFactory factory(surface);
    DevicePasses passes;
    scene::Overlay overlay(factory, core::RenderingApiType::OPENGL_ES, &passes);
    overlay.attach();

    Landscape landscape;
    Progress progress;
    Pace pace;
    bool isCaptureDue = options.captureAt >= 0.0;
    bool isWritten = true;
    double seconds = 0.0;
    for (std::uint64_t frame = 1; isWritten && (frame == 1 || seconds < options.seconds); ++frame) {
        if (options.isFixedStep) {
            setSteppedClock(seconds);
        }
        if (isCaptureDue && seconds >= options.captureAt) {
            isCaptureDue = false;
            platform::pressOwnKey(CAPTURE_KEY_PRESSED);
        }
        landscape.draw(surface.mImage, seconds);
        surface.beginOverlay();
        overlay.beginFrame();
        overlay.draw();
        if (options.every != 0 && frame % options.every == 0) {
            isWritten = writePicture(surface, numbered(options.png, frame));
        }
        // An application would swap its buffers here.
        overlay.endFrame();
        const double rate = frameRate(options, seconds);
        if (options.isFixedStep) {
            overlay.mScene.settle();
            seconds += 1.0 / rate;
        } else {
            pace.waitForNextFrame(rate);
            seconds = pace.elapsed();
        }
        progress.onFrame(seconds, frame, overlay.isShown());
    }
    overlay.detach();
    return isWritten && writePicture(surface, options.png);
}

/// Says which wanted figures are missing; empty when all are there.
std::string deviceProblem(const Options& options) {
    if (options.device.empty() || simulator::isActive()) {
        return {};
    }
    std::string names;
    for (const std::string& name : simulator::deviceNames()) {
        names += ' ' + name;
    }
    return simulator::deviceError() + "\nThe devices are:" + names;
}

/// Says why no picture can be written there, so that we find out before the first frame; empty when it can.
std::string folderProblem(const std::string& file) {
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    std::error_code error;
    if (folder.empty() || std::filesystem::is_directory(folder, error)) {
        return {};
    }
    return "There is no folder " + folder.string() + " for the picture.";
}

}  // namespace

int run(const Options& options) {
    std::string error = deviceProblem(options);
    if (error.empty()) {
        error = folderProblem(options.png);
    }
    if (error.empty()) {
        error = writeSettings(options);
    }
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        removePrivateFolder(options);
        return 1;
    }
    std::printf(
        "Overlay on a moving picture of %u by %u pixels, %g frames a second for %g seconds, with %s.\n",
        options.width, options.height, frameRate(options, 0.0), options.seconds,
        options.device.empty() ? "this machine's own figures"
                               : ("the figures of the simulated device " + options.device).c_str());
    if (!options.isPrivate) {
        std::printf(
            "Meanwhile, change what it shows with kordanixctl, for example: "
            "kordanixctl set widget_memory true\n");
    }
    const bool isDone = runFrames(options);
    removePrivateFolder(options);
    if (!isDone) {
        return 1;
    }
    std::error_code ignored;
    std::printf("The picture is in %s\n", std::filesystem::absolute(options.png, ignored).c_str());
    if (options.every != 0) {
        std::printf("The pictures of each %llu frames are beside it, numbered.\n",
                    static_cast<unsigned long long>(options.every));
    }
    return 0;
}

}  // namespace demo
