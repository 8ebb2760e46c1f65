#include "drawlist/ThumbnailPrimitive.h"

#include "drawlist/DrawList.h"

namespace drawlist {

void ThumbnailPrimitive::draw() {
    mList.batch.addPicture(mList.shape.toPixels(mPosition, mSize, mTranslation));
}

}  // namespace drawlist
