#pragma once

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"

#include <memory>

namespace software {

class Surface;

/// A grid that learns its surface's shape.
class GridPrimitive : public drawer::GridDrawer {
public:
    GridPrimitive(const Surface& surface, std::unique_ptr<drawer::MeshDrawer> lines);
    float getAspectRatio() override;

private:
    const Surface& mSurface;
};

}  // namespace software
