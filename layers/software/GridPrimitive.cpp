#include "software/GridPrimitive.h"

#include "software/Surface.h"

#include <utility>

namespace software {

GridPrimitive::GridPrimitive(const Surface& surface, std::unique_ptr<drawer::MeshDrawer> lines)
    : GridDrawer(std::move(lines)), mSurface(surface) {}

float GridPrimitive::getAspectRatio() {
    return mSurface.shape().aspectRatio();
}

}  // namespace software
