#include "drawlist/RectPrimitive.h"

#include "drawlist/DrawList.h"

namespace drawlist {

void RectPrimitive::draw() {
    Batch& batch = mList.batch;
    if (mRetained.begin(mList, *this, mColor)) {
        mRetained.repeat(batch);
        return;
    }
    const raster::Box box = mList.shape.toPixels(mPosition, mSize, mTranslation);
    const raster::PixelRect bounds = raster::touchedPixels(box, batch.clip());
    batch.beginSolid(bounds);
    batch.addRect(box, Paint(mColor));
    mRetained.keep(batch.endShape(bounds), true);
}

}  // namespace drawlist
