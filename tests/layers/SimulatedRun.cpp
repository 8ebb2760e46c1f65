#include "layers/SimulatedRun.h"

#include "core/RenderingApiType.h"
#include "demo/DevicePasses.h"
#include "demo/SteppedClock.h"
#include "ostra/OwnKeys.h"
#include "properties/SystemProperties.h"
#include "scene/Overlay.h"
#include "simulator/DeviceSimulator.h"
#include "utils/SystemInfoHelper.h"

#include <cstdio>
#include <string>

namespace {

constexpr Ostra::KeyEvent CAPTURE_KEY_PRESSED = {25, 1};

// Seconds. The history of the graphs is full at the end, and has begun to slide.
constexpr double END = 13.5;
constexpr double CAPTURE = 12.4;

/// Nobody sees the frames before the capture, so they are not drawn.
constexpr double FIRST_DRAWN = CAPTURE;

bool set(const std::string& name, const std::string& value) {
    const std::string error = platform::setProperty(("debug.kordanix." + name).c_str(), value.c_str());
    if (!error.empty()) {
        std::fprintf(stderr, "%s: %s\n", name.c_str(), error.c_str());
    }
    return error.empty();
}

}  // namespace

bool publishSettings(int count, char** settings) {
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

bool runSimulation(scene::PrimitiveFactory& factory, const std::function<void()>& paint,
                   const std::function<void(scene::Overlay&)>& draw) {
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
            paint();
        }
        overlay.beginFrame();
        if (seconds >= FIRST_DRAWN) {
            draw(overlay);
        }
        overlay.endFrame();
        overlay.mScene.settle();
    }
    const bool isShown = overlay.isShown();
    overlay.detach();
    return isShown;
}
