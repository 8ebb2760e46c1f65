#pragma once

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "raster/SurfaceShape.h"

#include <memory>
#include <utility>

namespace raster {

/// A grid that gets its surface's shape by reference; the shape must outlive it.
class SurfaceGrid : public drawer::GridDrawer {
public:
    SurfaceGrid(const SurfaceShape& shape, std::unique_ptr<drawer::MeshDrawer> lines)
        : GridDrawer(std::move(lines)), mShape(shape) {}

    float getAspectRatio() override { return mShape.aspectRatio(); }

private:
    const SurfaceShape& mShape;
};

}  // namespace raster
