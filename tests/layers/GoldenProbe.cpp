// Shows the overlay on a simulated device and writes the last frame:
// golden_probe WIDTH HEIGHT FILE [NAME=VALUE]...

#include "scene/Overlay.h"
#include "simulator/DeviceSimulator.h"
#include "software/Png.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"
#include "support/SimulatedRun.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

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

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4 || !simulator::isActive()) {
        std::fprintf(stderr, "%s\n", simulator::deviceError().c_str());
        return 2;
    }
    software::Surface surface(static_cast<std::uint32_t>(std::strtoul(argv[1], nullptr, 10)),
                              static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10)));
    software::SoftwareFactory factory(surface);
    const auto paintFrame = [&surface] {
        paint(surface.mImage);
        surface.beginOverlay();
    };
    if (!support::publishSettings(argc - 4, argv + 4) ||
        !support::runSimulation(factory, paintFrame, [](scene::Overlay& overlay) { overlay.draw(); })) {
        return 3;
    }
    std::string error;
    if (!software::writePng(surface.mImage, argv[3], error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 4;
    }
    return 0;
}
