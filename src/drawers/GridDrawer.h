#pragma once

#include "drawers/Drawer.h"
#include "drawers/MeshDrawer.h"
#include "utils/Export.h"

#include <memory>

namespace drawer {

/// Lines that divide a rectangle into squares of 22 canvas units (22/360 of the surface's shorter side),
/// measured from its left and bottom edges, which get no line themselves.
class KORDANIX_EXPORT GridDrawer : public Drawer {
public:
    /// Takes a mesh that draws every two vertices as a line of their own.
    explicit GridDrawer(std::unique_ptr<MeshDrawer> mesh);
    ~GridDrawer() override;

    void draw() override;

    /// Height of the surface divided by its width, in pixels. Supplied by the layer.
    virtual float getAspectRatio() = 0;

    /// Builds the lines anew when the surface's shape has changed; a change of the drawer's size alone does
    /// not count. A direction gets no lines when its cells would have no size or be more than 4096, as on a
    /// rectangle or a surface of no sensible size.
    void recalculateGrid();

    std::unique_ptr<MeshDrawer> mMesh;
    float mAspectRatio = 0.0F;  ///< for which the lines were built
};

}  // namespace drawer
