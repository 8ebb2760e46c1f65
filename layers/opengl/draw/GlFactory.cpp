#include "opengl/draw/GlFactory.h"

#include <utility>

#include "opengl/draw/DrawTarget.h"
#include "opengl/draw/Primitives.h"

namespace opengl {

std::unique_ptr<drawer::MeshDrawer> GlFactory::createMesh(scene::Topology topology) {
    return std::make_unique<GlMesh>(mTarget, topology);
}

std::unique_ptr<drawer::RectDrawer> GlFactory::createRect() {
    return std::make_unique<GlRect>(mTarget);
}

std::unique_ptr<drawer::GridDrawer> GlFactory::createGrid(std::unique_ptr<drawer::MeshDrawer> lines) {
    return std::make_unique<GlGrid>(mTarget, std::move(lines));
}

std::unique_ptr<drawer::TextDrawer> GlFactory::createText() {
    return std::make_unique<GlText>(mTarget);
}

std::unique_ptr<drawer::Drawer> GlFactory::createThumbnail() {
    return std::make_unique<GlThumbnail>(mTarget);
}

glm::uvec2 GlFactory::getSurfaceSize() const {
    return {mTarget.shape.mWidth, mTarget.shape.mHeight};
}

void GlFactory::setClip(const glm::vec2& position, const glm::vec2& size) {
    mTarget.batch.setClip(mTarget.shape.toWholePixels(position, size));
}

void GlFactory::clearClip() {
    mTarget.batch.clearClip();
}

bool GlFactory::beginDrawing(bool isSame) {
    if (isSame && mTarget.isDrawn && !mTarget.glyphs.isFull()) {
        return false;
    }
    mTarget.begin();
    return true;
}

}  // namespace opengl
