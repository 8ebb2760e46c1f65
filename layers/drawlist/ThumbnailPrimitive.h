#pragma once

#include "drawers/Drawer.h"

namespace drawlist {

struct DrawList;

/// The application's picture in its rectangle.
class ThumbnailPrimitive : public drawer::Drawer {
public:
    explicit ThumbnailPrimitive(DrawList& list) : mList(list) {}
    void draw() override;

private:
    DrawList& mList;
};

}  // namespace drawlist
