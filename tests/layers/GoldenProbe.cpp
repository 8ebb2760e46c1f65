// Shows the overlay on the simulated device that KORDANIX_DEVICE names, in stepped time, and writes the last
// frame. KORDANIX_RUNTIME_DIR names an empty folder.
//   golden_probe WIDTH HEIGHT FILE [NAME=VALUE]...

#include "demo/DevicePasses.h"
#include "demo/SteppedClock.h"
#include "ostra/OwnKeys.h"
#include "scene/Overlay.h"
#include "simulator/DeviceSimulator.h"
#include "software/Png.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"
#include "support/Settings.h"
#include "utils/SystemInfoHelper.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr Ostra::KeyEvent CAPTURE_KEY_PRESSED = {25, 1};

// Seconds. The history of the graphs is full at the end, and has begun to slide. Nobody sees the frames
// before the capture, so they are not drawn.
constexpr double CAPTURE = 12.4;
constexpr double END = 13.5;

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

/// Runs until the graphs are full and a frame has been captured. Returns whether the overlay is shown then.
bool run(software::Surface& surface) {
    software::SoftwareFactory factory(surface);
    demo::DevicePasses passes;
    scene::Overlay overlay(factory, core::RenderingApiType::OPENGL_ES, &passes);
    overlay.attach();
    bool isCaptureDue = true;
    for (double seconds = 0.0; seconds < END;
         seconds += 1.0 / simulator::figureAt("frame_rate", seconds).value_or(60.0)) {
        demo::setSteppedClock(seconds);
        const bool isSeen = seconds >= CAPTURE;
        if (isSeen && std::exchange(isCaptureDue, false)) {
            platform::pressOwnKey(CAPTURE_KEY_PRESSED);
        }
        if (isSeen) {
            paint(surface.mImage);
            surface.beginOverlay();
        }
        overlay.beginFrame();
        if (isSeen) {
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
    support::Settings settings = {
        {"status", "true"}, {"devmode", "true"}, {"api", "0"}, {"proc", utils::getProcessName()}};
    for (int i = 4; i < argc; ++i) {
        const std::string setting = argv[i];
        const std::size_t equals = setting.find('=');
        settings.emplace_back(setting.substr(0, equals), setting.substr(equals + 1));
    }
    software::Surface surface(static_cast<std::uint32_t>(std::strtoul(argv[1], nullptr, 10)),
                              static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10)));
    std::string error = support::publish(std::move(settings));
    if (error.empty() && run(surface) && software::writePng(surface.mImage, argv[3], error)) {
        return 0;
    }
    std::fprintf(stderr, "%s\n", error.c_str());
    return 3;
}
