#pragma once

#include "drawers/RectDrawer.h"

namespace software {

class Surface;

/// A rectangle filled with one colour.
class RectPrimitive : public drawer::RectDrawer {
public:
    explicit RectPrimitive(Surface& surface) : mSurface(surface) {}
    void draw() override;

private:
    Surface& mSurface;
};

}  // namespace software
