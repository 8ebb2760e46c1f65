#pragma once

#include "drawers/Drawer.h"
#include "utils/Export.h"

#include <glm/vec4.hpp>
#include <vector>

namespace gui {

/// A corner of a mesh in the drawer's local coordinates (-1..1, y downwards).
struct Vertex {
    float x;
    float y;
};

}  // namespace gui

namespace drawer {

/// Draws vertices in one colour. A layer implements draw(), and clear(), which must empty the list of
/// vertices. The layer also decides how the vertices of each mesh connect; the drawer that takes the mesh
/// says what it needs.
class KORDANIX_EXPORT MeshDrawer : public Drawer {
public:
    ~MeshDrawer() override;

    /// The drawer that owns the mesh fills and edits these; nobody else changes their order or number.
    std::vector<gui::Vertex> mVertices;

    glm::vec4 mColor{0.0F};
};

}  // namespace drawer
