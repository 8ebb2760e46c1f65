#pragma once

#include "drawers/Drawer.h"
#include "drawers/MeshDrawer.h"
#include "utils/Export.h"

#include <memory>

namespace drawer {

/// Lines that divide a rectangle into squares of 22 canvas units (22/360 of the surface's shorter side). They
/// are measured from the left and bottom edges, which have no lines themselves.
class KORDANIX_EXPORT GridDrawer : public Drawer {
public:
    /// Takes a mesh that draws each pair of vertices as one line.
    explicit GridDrawer(std::unique_ptr<MeshDrawer> mesh);
    ~GridDrawer() override;

    void draw() override;

    /// The surface's height divided by its width, in pixels. The layer supplies it.
    virtual float getAspectRatio() = 0;

    /// Rebuilds the lines when the surface's shape has changed, but not when only the drawer's size has. A
    /// direction gets no lines when its cells would have no size or number more than 4096, as with a
    /// degenerate rectangle or surface.
    void recalculateGrid();

    std::unique_ptr<MeshDrawer> mMesh;
    float mAspectRatio = 0.0F;  ///< the ratio that the lines were built for
};

}  // namespace drawer
