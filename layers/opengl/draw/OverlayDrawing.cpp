#include "opengl/draw/OverlayDrawing.h"

namespace opengl {

std::string OverlayDrawing::create() {
    mList.forget();
    return mRenderer.create(mList);
}

void OverlayDrawing::destroy() {
    mRenderer.destroy();
    mList.forget();
}

void OverlayDrawing::abandon() {
    mRenderer.abandon();
    mList.forget();
}

void OverlayDrawing::setSurface(int width, int height, bool isSrgb) {
    mList.setSize(width, height);
    mList.isSrgb = isSrgb;
}

}  // namespace opengl
