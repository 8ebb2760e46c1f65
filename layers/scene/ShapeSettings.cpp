#include "scene/ShapeSettings.h"

namespace scene {

const ShapeSettings& shapeSettings() {
    // Never destroyed: a thread may still draw a frame while the process exits.
    static const auto* const instance =
        new ShapeSettings{SysPropWatcher::createSysProp<bool>("debug.kordanix.graphs", true),
                          SysPropWatcher::createSysProp<bool>("debug.kordanix.fit_width", false),
                          SysPropWatcher::createSysProp<bool>("debug.kordanix.hide_unreadable", false)};
    return *instance;
}

}  // namespace scene
