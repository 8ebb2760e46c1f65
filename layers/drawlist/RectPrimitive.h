#pragma once

#include "drawers/RectDrawer.h"

namespace drawlist {

struct DrawList;

/// A rectangle filled with one colour.
class RectPrimitive : public drawer::RectDrawer {
public:
    explicit RectPrimitive(DrawList& list) : mList(list) {}
    void draw() override;

private:
    DrawList& mList;
};

}  // namespace drawlist
