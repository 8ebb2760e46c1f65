#pragma once

#include "scene/PrimitiveFactory.h"

namespace software {

class Surface;

/// Makes primitives that draw on a picture in memory. The surface must outlive the factory and its
/// primitives.
class SoftwareFactory : public scene::PrimitiveFactory {
public:
    explicit SoftwareFactory(Surface& surface);

    std::unique_ptr<drawer::MeshDrawer> createMesh(scene::Topology topology) override;
    std::unique_ptr<drawer::RectDrawer> createRect() override;
    std::unique_ptr<drawer::GridDrawer> createGrid(std::unique_ptr<drawer::MeshDrawer> lines) override;
    std::unique_ptr<drawer::TextDrawer> createText() override;
    /// From then on the surface keeps the application's picture at each beginOverlay().
    std::unique_ptr<drawer::Drawer> createThumbnail() override;
    glm::uvec2 getSurfaceSize() const override;
    void setClip(const glm::vec2& position, const glm::vec2& size) override;
    void clearClip() override;

private:
    Surface& mSurface;
};

}  // namespace software
