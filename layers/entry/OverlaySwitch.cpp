#include "entry/OverlaySwitch.h"

#include "core/StateInfo.h"

namespace entry {

Obstacle whyIsOff(core::RenderingApiType api) {
    if (!core::StateInfo::mStatusProp.getValue()) {
        return "it is switched off (debug.kordanix.status)";
    }
    if (core::StateInfo::mRenderApiProp.getValue() != api) {
        return "another graphics API is selected (debug.kordanix.api)";
    }
    return "another process is selected (debug.kordanix.proc)";
}

}  // namespace entry
