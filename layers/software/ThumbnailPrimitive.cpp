#include "software/ThumbnailPrimitive.h"

#include "software/Surface.h"

namespace software {

void ThumbnailPrimitive::draw() {
    mSurface.mRasterizer.drawImage(mSurface.mImage, mSurface.clip(), mSurface.mBackground,
                                   mSurface.shape().toPixels(mPosition, mSize, mTranslation));
}

}  // namespace software
