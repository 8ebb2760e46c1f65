#pragma once

#include "drawers/RectDrawer.h"
#include "drawlist/RetainedRange.h"

namespace drawlist {

/// A rectangle filled with one colour.
class RectPrimitive : public drawer::RectDrawer {
public:
    explicit RectPrimitive(DrawList& list) : mList(list) {}
    void draw() override;

private:
    DrawList& mList;
    RetainedRange mRetained;
};

}  // namespace drawlist
