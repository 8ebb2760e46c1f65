#include "entry/LibraryFrame.h"

#include "entry/FigureHandout.h"
#include "entry/OverlaySwitch.h"
#include "scene/Overlay.h"

namespace entry {

Obstacle beginFrame(scene::Overlay& overlay, OverlayRight& right, Obstacle surface, bool mayAsk,
                    bool& isInFrame) {
    if (!right.isGranted()) {
        const Obstacle refusal = mayAsk ? right.ask() : surface;
        if (refusal != nullptr) {
            return refusal;
        }
    }
    isInFrame = true;
    overlay.attach();
    overlay.beginFrame();
    if (!overlay.isDrawn()) {
        return whyIsOff(right.api());
    }
    if (surface == nullptr) {
        overlay.draw();
        handOutFigures(overlay, right.api());
    }
    return surface;
}

}  // namespace entry
