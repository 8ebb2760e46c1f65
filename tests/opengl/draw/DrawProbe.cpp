// Shows the overlay on a simulated device and writes the last frame:
// opengl_draw_probe API WIDTH HEIGHT FILE [NAME=VALUE]...
// API is "software" or one of opengl_test::APIS.

#include "opengl/draw/AppPicture.h"
#include "opengl/draw/GlStage.h"
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

bool drawInMemory(software::Image& image) {
    software::Surface surface(image.mWidth, image.mHeight);
    software::SoftwareFactory factory(surface);
    const auto paint = [&surface] {
        paintBlocks(surface.mImage);
        surface.beginOverlay();
    };
    const bool isShown =
        support::runSimulation(factory, paint, [](scene::Overlay& overlay) { overlay.draw(); });
    image = surface.mImage;
    return isShown;
}

bool drawInContext(const std::string& api, software::Image& image) {
    const std::unique_ptr<GlStage> stage = GlStage::create(api, image.mWidth, image.mHeight);
    if (stage == nullptr) {
        return false;
    }
    const auto draw = [&stage](scene::Overlay& overlay) { stage->show([&overlay] { overlay.draw(); }); };
    const bool isShown = support::runSimulation(
        stage->drawing().factory(), [&stage] { stage->paintBlocks(); }, draw);
    image = stage->read();
    return isShown;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5 || !simulator::isActive()) {
        std::fprintf(stderr, "%s\n", simulator::deviceError().c_str());
        return 2;
    }
    const std::string api = argv[1];
    software::Image image(static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10)),
                          static_cast<std::uint32_t>(std::strtoul(argv[3], nullptr, 10)));
    if (!support::publishSettings(argc - 5, argv + 5) ||
        !(api == "software" ? drawInMemory(image) : drawInContext(api, image))) {
        return 3;
    }
    std::string error;
    if (!software::writePng(image, argv[4], error)) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 4;
    }
    return 0;
}
