#pragma once

#include "scene/PrimitiveFactory.h"

namespace drawlist {

struct DrawList;

/// Makes primitives that write triangles into a batch. The list must outlive the factory and its primitives.
class DrawListFactory : public scene::PrimitiveFactory {
public:
    explicit DrawListFactory(DrawList& list) : mList(list) {}

    std::unique_ptr<drawer::MeshDrawer> createMesh(scene::Topology topology) override;
    std::unique_ptr<drawer::RectDrawer> createRect() override;
    std::unique_ptr<drawer::GridDrawer> createGrid(std::unique_ptr<drawer::MeshDrawer> lines) override;
    std::unique_ptr<drawer::TextDrawer> createText() override;
    std::unique_ptr<drawer::Drawer> createThumbnail() override;

    glm::uvec2 getSurfaceSize() const override;
    void setClip(const glm::vec2& position, const glm::vec2& size) override;
    void clearClip() override;

    /// False when the last drawing can be shown again.
    bool beginDrawing(bool isSame) override;

private:
    DrawList& mList;
};

}  // namespace drawlist
