#pragma once

#include "drawers/Drawer.h"

namespace software {

class Surface;

/// The application's picture, as it was before the overlay was drawn in this frame, scaled to fill its
/// rectangle. Draws nothing before the surface's first beginOverlay().
class ThumbnailPrimitive : public drawer::Drawer {
public:
    explicit ThumbnailPrimitive(Surface& surface) : mSurface(surface) {}
    void draw() override;

private:
    Surface& mSurface;
};

}  // namespace software
