// Shows the overlay on the simulated device that KORDANIX_DEVICE names, in stepped time, and writes the last
// frame: golden_probe WIDTH HEIGHT FILE [NAME=VALUE]... Which device it is, is settled while the library is
// loaded, so each picture needs a new process. KORDANIX_RUNTIME_DIR names an empty folder.

#include "core/RenderingApiType.h"
#include "demo/DevicePasses.h"
#include "demo/SteppedClock.h"
#include "ostra/OwnKeys.h"
#include "properties/SystemProperties.h"
#include "scene/Overlay.h"
#include "simulator/DeviceSimulator.h"
#include "software/Png.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"
#include "utils/SystemInfoHelper.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr Ostra::KeyEvent CAPTURE_KEY_PRESSED = {25, 1};

// Seconds. The history of the graphs is full at the end, and has begun to slide.
constexpr double END = 13.5;
constexpr double CAPTURE = 12.4;

/// Nobody sees the frames before the capture, so they are not drawn.
constexpr double FIRST_DRAWN = CAPTURE;

/// The application's picture: light and dark in bands, so that what is translucent shows.
void paint(software::Image& image) {
    for (std::uint32_t y = 0; y < image.mHeight; ++y) {
        const auto shade = static_cast<std::uint8_t>(30 + 120 * y / image.mHeight);
        software::Pixel* const row = image.row(y);
        for (std::uint32_t x = 0; x < image.mWidth; ++x) {
            const bool isBand = (x + y) / 60 % 3 == 0;
            row[x] = isBand ? software::Pixel{160, 140, shade, 255} : software::Pixel{shade, shade, 90, 255};
        }
    }
}

bool set(const std::string& name, const std::string& value) {
    const std::string error = platform::setProperty(("debug.kordanix." + name).c_str(), value.c_str());
    if (!error.empty()) {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), error.c_str());
    }
    return error.empty();
}

bool writeSettings(int count, char** settings) {
    bool isWritten = set("status", "true") && set("devmode", "true") && set("api", "0") &&
                     set("proc", utils::getProcessName());
    for (int i = 0; i < count; ++i) {
        const std::string setting = settings[i];
        const std::size_t equals = setting.find('=');
        isWritten = isWritten && equals != std::string::npos &&
                    set(setting.substr(0, equals), setting.substr(equals + 1));
    }
    return isWritten && set("settingsgeneration", "1");
}

/// Returns whether the overlay was shown in the last frame.
bool runFrames(software::Surface& surface) {
    software::SoftwareFactory factory(surface);
    demo::DevicePasses passes;
    scene::Overlay overlay(factory, static_cast<core::RenderingApiType>(0), &passes);
    overlay.attach();
    bool isCaptureDue = true;
    for (double seconds = 0.0; seconds < END;
         seconds += 1.0 / simulator::figureAt("frame_rate", seconds).value_or(60.0)) {
        demo::setSteppedClock(seconds);
        if (isCaptureDue && seconds >= CAPTURE) {
            isCaptureDue = false;
            platform::pressOwnKey(CAPTURE_KEY_PRESSED);
        }
        if (seconds >= FIRST_DRAWN) {
            paint(surface.mImage);
            surface.beginOverlay();
        }
        overlay.beginFrame();
        if (seconds >= FIRST_DRAWN) {
            overlay.draw();
        }
        overlay.endFrame();
        overlay.mScene.settle();
    }
    const bool isShown = overlay.isShown();
    overlay.detach();
    return isShown;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4 || !simulator::isActive()) {
        std::fprintf(stderr, "%s\n", simulator::deviceError().c_str());
        return 2;
    }
    software::Surface surface(static_cast<std::uint32_t>(std::strtoul(argv[1], nullptr, 10)),
                              static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10)));
    if (!writeSettings(argc - 4, argv + 4) || !runFrames(surface)) {
        return 3;
    }
    std::string error;
    if (!software::writePng(surface.mImage, argv[3], error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 4;
    }
    return 0;
}
