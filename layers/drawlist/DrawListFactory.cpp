#include "drawlist/DrawListFactory.h"

#include "drawlist/DrawList.h"
#include "drawlist/MeshPrimitive.h"
#include "drawlist/RectPrimitive.h"
#include "drawlist/TextPrimitive.h"
#include "drawlist/ThumbnailPrimitive.h"
#include "raster/SurfaceGrid.h"

#include <utility>

namespace drawlist {

std::unique_ptr<drawer::MeshDrawer> DrawListFactory::createMesh(scene::Topology topology) {
    return std::make_unique<MeshPrimitive>(mList, topology);
}

std::unique_ptr<drawer::RectDrawer> DrawListFactory::createRect() {
    return std::make_unique<RectPrimitive>(mList);
}

std::unique_ptr<drawer::GridDrawer> DrawListFactory::createGrid(std::unique_ptr<drawer::MeshDrawer> lines) {
    return std::make_unique<raster::SurfaceGrid>(mList.shape, std::move(lines));
}

std::unique_ptr<drawer::TextDrawer> DrawListFactory::createText() {
    return std::make_unique<TextPrimitive>(mList);
}

std::unique_ptr<drawer::Drawer> DrawListFactory::createThumbnail() {
    return std::make_unique<ThumbnailPrimitive>(mList);
}

glm::uvec2 DrawListFactory::getSurfaceSize() const {
    return {mList.shape.width, mList.shape.height};
}

void DrawListFactory::setClip(const glm::vec2& position, const glm::vec2& size) {
    mList.batch.setClip(mList.shape.toWholePixels(position, size));
}

void DrawListFactory::clearClip() {
    mList.batch.clearClip();
}

bool DrawListFactory::beginDrawing(bool isSame) {
    if (isSame && mList.isDrawn && !mList.glyphs.isFull()) {
        return false;
    }
    mList.begin();
    return true;
}

}  // namespace drawlist
