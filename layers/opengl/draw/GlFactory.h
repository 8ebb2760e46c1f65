#pragma once

#include "scene/PrimitiveFactory.h"

namespace opengl {

struct DrawTarget;

/// Primitives that leave triangles in a batch. The target outlives the factory and what it made.
class GlFactory : public scene::PrimitiveFactory {
public:
    explicit GlFactory(DrawTarget& target) : mTarget(target) {}

    std::unique_ptr<drawer::MeshDrawer> createMesh(scene::Topology topology) override;
    std::unique_ptr<drawer::RectDrawer> createRect() override;
    std::unique_ptr<drawer::GridDrawer> createGrid(std::unique_ptr<drawer::MeshDrawer> lines) override;
    std::unique_ptr<drawer::TextDrawer> createText() override;
    std::unique_ptr<drawer::Drawer> createThumbnail() override;

    glm::uvec2 getSurfaceSize() const override;
    void setClip(const glm::vec2& position, const glm::vec2& size) override;
    void clearClip() override;

    /// False when the last drawing is still good.
    bool beginDrawing(bool isSame) override;

private:
    DrawTarget& mTarget;
};

}  // namespace opengl
