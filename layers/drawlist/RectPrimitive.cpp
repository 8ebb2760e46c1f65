#include "drawlist/RectPrimitive.h"

#include "drawlist/DrawList.h"

namespace drawlist {

void RectPrimitive::draw() {
    mList.batch.addRect(mList.shape.toPixels(mPosition, mSize, mTranslation), Paint(mColor));
}

}  // namespace drawlist
