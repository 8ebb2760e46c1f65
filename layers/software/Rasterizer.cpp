#include "software/Rasterizer.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace software {

namespace {

/// Segments that leave a row or column of pixels by less than this are horizontal or vertical.
constexpr float STRAIGHT = 0.125F;

/// The box around those points that are finite, grown by `margin`; an empty box when there is none.
Box boundsOf(const glm::vec2* points, std::size_t count, float margin) {
    constexpr float INFINITE = std::numeric_limits<float>::infinity();
    Box box{INFINITE, INFINITE, -INFINITE, -INFINITE};
    for (std::size_t i = 0; i < count; ++i) {
        if (std::isfinite(points[i].x) && std::isfinite(points[i].y)) {
            box.mLeft = std::min(box.mLeft, points[i].x - margin);
            box.mTop = std::min(box.mTop, points[i].y - margin);
            box.mRight = std::max(box.mRight, points[i].x + margin);
            box.mBottom = std::max(box.mBottom, points[i].y + margin);
        }
    }
    return box;
}

void blendRow(Pixel* pixels, const float* coverage, int count, const Paint& paint) {
    for (int i = 0; i < count; ++i) {
        if (coverage[i] > 0.0F) {
            blendOver(pixels[i], paint.mColor, toAlpha(coverage[i] * paint.mAlpha));
        }
    }
}

void blendStrokes(Image& image, const PixelRect& region, StrokeMask& mask, const Paint& paint) {
    for (int y = region.mTop; y < region.mBottom; ++y) {
        blendRow(image.row(static_cast<std::size_t>(y)) + region.mLeft, mask.row(y), region.width(), paint);
    }
}

/// Where a line of whole pixels around `center` begins. A quarter pixel keeps the common positions, whole
/// and half pixels, away from the point where rounding turns.
float alignLine(float center, float width, float low, float high) {
    const float start = std::floor(center - 0.5F * width + 0.75F);
    return std::max(std::min(start, std::floor(high) - width), std::ceil(low));
}

}  // namespace

void Rasterizer::fillRect(Image& image, const PixelRect& clip, const Box& box, const Paint& paint) {
    const PixelRect pixels = touchedPixels(box, clip);
    for (int y = pixels.mTop; y < pixels.mBottom; ++y) {
        const float inRow = overlap(box.mTop, box.mBottom, y) * paint.mAlpha;
        Pixel* row = image.row(static_cast<std::size_t>(y));
        for (int x = pixels.mLeft; x < pixels.mRight; ++x) {
            blendOver(row[x], paint.mColor, toAlpha(inRow * overlap(box.mLeft, box.mRight, x)));
        }
    }
}

void Rasterizer::fillStrip(Image& image, const PixelRect& clip, const glm::vec2* points, std::size_t count,
                           const Paint& paint) {
    const PixelRect region = touchedPixels(boundsOf(points, count, 0.0F), clip);
    if (region.isEmpty()) {
        return;
    }
    mArea.begin(region);
    for (std::size_t i = 2; i < count; ++i) {
        mArea.addTriangle(points[i - 2], points[i - 1], points[i]);
    }
    for (int y = region.mTop; y < region.mBottom; ++y) {
        blendRow(image.row(static_cast<std::size_t>(y)) + region.mLeft, mArea.resolveRow(y), region.width(),
                 paint);
    }
}

void Rasterizer::strokeLine(Image& image, const PixelRect& clip, const glm::vec2* points, std::size_t count,
                            float width, const Paint& paint) {
    const PixelRect region = touchedPixels(boundsOf(points, count, width), clip);
    if (region.isEmpty()) {
        return;
    }
    mStrokes.begin(region);
    for (std::size_t i = 1; i < count; ++i) {
        mStrokes.addStroke(points[i - 1], points[i], width);
    }
    blendStrokes(image, region, mStrokes, paint);
}

void Rasterizer::strokeSegments(Image& image, const PixelRect& clip, const Box& frame,
                                const glm::vec2* points, std::size_t count, float width, const Paint& paint) {
    const PixelRect region = touchedPixels(boundsOf(points, count, width), clip);
    if (region.isEmpty()) {
        return;
    }
    mStrokes.begin(region);
    const float wholeWidth = std::max(1.0F, std::round(width));
    for (std::size_t i = 1; i < count; i += 2) {
        const glm::vec2& from = points[i - 1];
        const glm::vec2& to = points[i];
        if (std::fabs(from.x - to.x) < STRAIGHT) {
            const float left = alignLine(0.5F * (from.x + to.x), wholeWidth, frame.mLeft, frame.mRight);
            mStrokes.addBox({left, std::min(from.y, to.y), left + wholeWidth, std::max(from.y, to.y)});
        } else if (std::fabs(from.y - to.y) < STRAIGHT) {
            const float top = alignLine(0.5F * (from.y + to.y), wholeWidth, frame.mTop, frame.mBottom);
            mStrokes.addBox({std::min(from.x, to.x), top, std::max(from.x, to.x), top + wholeWidth});
        } else {
            mStrokes.addStroke(from, to, width);
        }
    }
    blendStrokes(image, region, mStrokes, paint);
}

void Rasterizer::drawTexels(Image& image, const PixelRect& clip, const TexelRect& texels, const Box& box,
                            const Paint& paint) {
    if (!mColumns.prepare(box.mLeft, box.mRight, texels.mWidth, clip.mLeft, clip.mRight) ||
        !mRows.prepare(box.mTop, box.mBottom, texels.mHeight, clip.mTop, clip.mBottom)) {
        return;
    }
    const auto width = static_cast<std::size_t>(texels.mWidth);
    const float scale = paint.mAlpha / 255.0F;
    for (int y = mRows.first(); y < mRows.end(); ++y) {
        const AxisFilter::Taps& rows = mRows.taps(y);
        const float* rowWeights = mRows.weights(rows);
        mSums.assign(width, 0.0F);
        for (std::size_t j = 0; j < rows.mCount; ++j) {
            const std::uint8_t* source = texels.mFirst + (rows.mFirst + j) * texels.mStride;
            for (std::size_t i = 0; i < width; ++i) {
                mSums[i] += rowWeights[j] * static_cast<float>(source[i]);
            }
        }
        Pixel* target = image.row(static_cast<std::size_t>(y));
        for (int x = mColumns.first(); x < mColumns.end(); ++x) {
            const AxisFilter::Taps& columns = mColumns.taps(x);
            const float* columnWeights = mColumns.weights(columns);
            float sum = 0.0F;
            for (std::size_t i = 0; i < columns.mCount; ++i) {
                sum += columnWeights[i] * mSums[columns.mFirst + i];
            }
            blendOver(target[x], paint.mColor, toAlpha(sum * scale));
        }
    }
}

void Rasterizer::drawImage(Image& image, const PixelRect& clip, const Image& source, const Box& box) {
    if (!mColumns.prepare(box.mLeft, box.mRight, static_cast<int>(source.mWidth), clip.mLeft, clip.mRight) ||
        !mRows.prepare(box.mTop, box.mBottom, static_cast<int>(source.mHeight), clip.mTop, clip.mBottom)) {
        return;
    }
    const std::size_t width = source.mWidth;
    for (int y = mRows.first(); y < mRows.end(); ++y) {
        const AxisFilter::Taps& rows = mRows.taps(y);
        const float* rowWeights = mRows.weights(rows);
        // Four sums a column: colours weighted with their alpha, then the alpha.
        mSums.assign(width * 4, 0.0F);
        for (std::size_t j = 0; j < rows.mCount; ++j) {
            const Pixel* pixels = source.row(rows.mFirst + j);
            for (std::size_t i = 0; i < width; ++i) {
                const float alpha = rowWeights[j] * static_cast<float>(pixels[i].mAlpha);
                float* sums = mSums.data() + i * 4;
                sums[0] += alpha * static_cast<float>(pixels[i].mRed);
                sums[1] += alpha * static_cast<float>(pixels[i].mGreen);
                sums[2] += alpha * static_cast<float>(pixels[i].mBlue);
                sums[3] += alpha;
            }
        }
        Pixel* target = image.row(static_cast<std::size_t>(y));
        for (int x = mColumns.first(); x < mColumns.end(); ++x) {
            const AxisFilter::Taps& columns = mColumns.taps(x);
            const float* columnWeights = mColumns.weights(columns);
            float mean[4] = {};
            for (std::size_t i = 0; i < columns.mCount; ++i) {
                const float* sums = mSums.data() + (columns.mFirst + i) * 4;
                for (int channel = 0; channel < 4; ++channel) {
                    mean[channel] += columnWeights[i] * sums[channel];
                }
            }
            if (mean[3] > 0.0F) {
                const float scale = 1.0F / (mean[3] * 255.0F);
                const Paint paint =
                    makePaint({mean[0] * scale, mean[1] * scale, mean[2] * scale, mean[3] / 255.0F});
                blendOver(target[x], paint.mColor, toAlpha(paint.mAlpha));
            }
        }
    }
}

}  // namespace software
