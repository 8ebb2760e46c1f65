#include "drawlist/RectPrimitive.h"

#include "drawlist/DrawList.h"

namespace drawlist {

void RectPrimitive::draw() {
    Batch& batch = mList.batch;
    const raster::Box box = mList.shape.toPixels(mPosition, mSize, mTranslation);
    const raster::PixelRect bounds = raster::touchedPixels(box, batch.clip());
    batch.beginSolid(bounds);
    batch.addRect(box, Paint(mColor));
    batch.endShape(bounds);
}

}  // namespace drawlist
