#include "scene/FrameTimeSettings.h"

namespace scene {

namespace {

constexpr std::uint32_t BLUE = 0xFF0084FF;
constexpr std::uint32_t ORANGE = 0xFFFF7200;
constexpr std::uint32_t DARK_GREEN = 0xFF00B300;

}  // namespace

const FrameTimeSettings& frameTimeSettings() {
    // Never destroyed: a thread may still draw a frame while the process exits.
    static const auto* const instance =
        new FrameTimeSettings{SysPropWatcher::createSysProp<bool>("debug.kordanix.widget_frame_time", true),
                              SysPropWatcher::createSysProp<std::string>("debug.kordanix.screen_rate", {}),
                              {"debug.kordanix.widget_frame_time_swap", true, BLUE},
                              {"debug.kordanix.widget_frame_time_gpu", true, ORANGE},
                              {"debug.kordanix.widget_frame_time_cpu", true, DARK_GREEN}};
    return *instance;
}

}  // namespace scene
