#include "opengl/draw/OverlayDrawing.h"

namespace opengl {

std::string OverlayDrawing::create() {
    mTarget.forget();
    return mRenderer.create();
}

void OverlayDrawing::destroy() {
    mRenderer.destroy();
    mTarget.forget();
}

void OverlayDrawing::abandon() {
    mRenderer.abandon();
    mTarget.forget();
}

void OverlayDrawing::setSurface(int width, int height, bool isSrgb) {
    mTarget.setSize(width, height);
    mRenderer.setSrgb(isSrgb);
}

}  // namespace opengl
