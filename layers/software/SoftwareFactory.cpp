#include "software/SoftwareFactory.h"

#include "raster/SurfaceGrid.h"
#include "software/MeshPrimitive.h"
#include "software/RectPrimitive.h"
#include "software/Surface.h"
#include "software/TextPrimitive.h"
#include "software/ThumbnailPrimitive.h"

#include <utility>

namespace software {

SoftwareFactory::SoftwareFactory(Surface& surface) : mSurface(surface) {}

std::unique_ptr<drawer::MeshDrawer> SoftwareFactory::createMesh(scene::Topology topology) {
    return std::make_unique<MeshPrimitive>(mSurface, topology);
}

std::unique_ptr<drawer::RectDrawer> SoftwareFactory::createRect() {
    return std::make_unique<RectPrimitive>(mSurface);
}

std::unique_ptr<drawer::GridDrawer> SoftwareFactory::createGrid(std::unique_ptr<drawer::MeshDrawer> lines) {
    return std::make_unique<raster::SurfaceGrid>(mSurface.shape(), std::move(lines));
}

std::unique_ptr<drawer::TextDrawer> SoftwareFactory::createText() {
    return std::make_unique<TextPrimitive>(mSurface);
}

std::unique_ptr<drawer::Drawer> SoftwareFactory::createThumbnail() {
    mSurface.mKeepsBackground = true;
    return std::make_unique<ThumbnailPrimitive>(mSurface);
}

glm::uvec2 SoftwareFactory::getSurfaceSize() const {
    return {mSurface.mImage.mWidth, mSurface.mImage.mHeight};
}

void SoftwareFactory::setClip(const glm::vec2& position, const glm::vec2& size) {
    mSurface.setClip(position, size);
}

void SoftwareFactory::clearClip() {
    mSurface.clearClip();
}

}  // namespace software
