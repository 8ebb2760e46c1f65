#include "support/SimulatedRun.h"

#include "core/RenderingApiType.h"
#include "demo/DevicePasses.h"
#include "demo/SteppedClock.h"
#include "ostra/OwnKeys.h"
#include "scene/Overlay.h"
#include "simulator/DeviceSimulator.h"
#include "support/Settings.h"
#include "utils/SystemInfoHelper.h"

#include <cstdio>
#include <string>
#include <utility>

namespace support {

namespace {

constexpr Ostra::KeyEvent CAPTURE_KEY_PRESSED = {25, 1};

// Seconds. The history of the graphs is full at the end, and has begun to slide. Nobody sees the frames
// before the capture, so they are not drawn.
constexpr double CAPTURE = 12.4;
constexpr double END = 13.5;

}  // namespace

bool publishSettings(int count, char** settings) {
    Settings all = {{"status", "true"}, {"devmode", "true"}, {"api", "0"}, {"proc", utils::getProcessName()}};
    for (int i = 0; i < count; ++i) {
        const std::string setting = settings[i];
        const std::size_t equals = setting.find('=');
        all.emplace_back(setting.substr(0, equals), setting.substr(equals + 1));
    }
    const std::string error = publish(std::move(all));
    std::fputs(error.c_str(), stderr);
    return error.empty();
}

bool runSimulation(scene::PrimitiveFactory& factory, const std::function<void()>& paint,
                   const std::function<void(scene::Overlay&)>& draw) {
    demo::DevicePasses passes;
    scene::Overlay overlay(factory, core::RenderingApiType::OPENGL_ES, &passes);
    overlay.attach();
    bool isCaptureDue = true;
    for (double seconds = 0.0; seconds < END;
         seconds += 1.0 / simulator::figureAt("frame_rate", seconds).value_or(60.0)) {
        demo::setSteppedClock(seconds);
        const bool isSeen = seconds >= CAPTURE;
        if (isSeen && isCaptureDue) {
            isCaptureDue = false;
            platform::pressOwnKey(CAPTURE_KEY_PRESSED);
        }
        if (isSeen) {
            paint();
        }
        overlay.beginFrame();
        if (isSeen) {
            draw(overlay);
        }
        overlay.endFrame();
        overlay.mScene.settle();
    }
    const bool isShown = overlay.isShown();
    overlay.detach();
    return isShown;
}

}  // namespace support
