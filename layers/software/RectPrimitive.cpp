#include "software/RectPrimitive.h"

#include "software/Surface.h"

namespace software {

void RectPrimitive::draw() {
    Rasterizer::fillRect(mSurface.mImage, mSurface.clip(),
                         mSurface.shape().toPixels(mPosition, mSize, mTranslation), makePaint(mColor));
}

}  // namespace software
