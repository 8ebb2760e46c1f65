#include "software/Rasterizer.h"

#include "raster/GridLine.h"
#include "raster/Outline.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace software {

namespace {

/// The box around those points that are finite, grown by `margin`; an empty box when there is none.
raster::Box boundsOf(const glm::vec2* points, std::size_t count, float margin) {
    constexpr float INFINITE = std::numeric_limits<float>::infinity();
    raster::Box box{INFINITE, INFINITE, -INFINITE, -INFINITE};
    for (std::size_t i = 0; i < count; ++i) {
        if (raster::isFinite(points[i])) {
            box.left = std::min(box.left, points[i].x - margin);
            box.top = std::min(box.top, points[i].y - margin);
            box.right = std::max(box.right, points[i].x + margin);
            box.bottom = std::max(box.bottom, points[i].y + margin);
        }
    }
    return box;
}

void blendRow(Pixel* pixels, const float* coverage, int count, const Paint& paint) {
    for (int i = 0; i < count; ++i) {
        if (coverage[i] > 0.0F) {
            blendOver(pixels[i], paint.color, toAlpha(coverage[i] * paint.alpha));
        }
    }
}

/// Ink over its outline. A black outline and the ink are one layer, which only matters for translucent
/// colours.
void blendOutlined(Pixel* pixels, const float* ink, const float* outline, int count, const Paint& paint) {
    if (paint.isDark) {
        blendRow(pixels, outline, count, {{255, 255, 255, 255}, paint.alpha});
        blendRow(pixels, ink, count, paint);
        return;
    }
    for (int i = 0; i < count; ++i) {
        if (outline[i] > 0.0F) {
            const raster::Outlined both(ink[i], outline[i]);
            const auto shade = [&both](std::uint8_t channel) {
                return static_cast<std::uint8_t>(static_cast<float>(channel) * both.ink + 0.5F);
            };
            const Pixel& color = paint.color;
            blendOver(pixels[i], {shade(color.red), shade(color.green), shade(color.blue), 255},
                      toAlpha(both.cover * paint.alpha));
        }
    }
}

void blendStrokes(Image& image, const raster::PixelRect& region, StrokeMask& mask, const Paint& paint) {
    for (int y = region.top; y < region.bottom; ++y) {
        blendRow(image.row(static_cast<std::size_t>(y)) + region.left, mask.row(y), region.width(), paint);
    }
}

}  // namespace

void Rasterizer::fillRect(Image& image, const raster::PixelRect& clip, const raster::Box& box,
                          const Paint& paint) {
    const raster::PixelRect pixels = raster::touchedPixels(box, clip);
    for (int y = pixels.top; y < pixels.bottom; ++y) {
        const float inRow = raster::overlap(box.top, box.bottom, y) * paint.alpha;
        Pixel* row = image.row(static_cast<std::size_t>(y));
        for (int x = pixels.left; x < pixels.right; ++x) {
            blendOver(row[x], paint.color, toAlpha(inRow * raster::overlap(box.left, box.right, x)));
        }
    }
}

void Rasterizer::fillStrip(Image& image, const raster::PixelRect& clip, const glm::vec2* points,
                           std::size_t count, const Paint& paint) {
    const raster::PixelRect region = raster::touchedPixels(boundsOf(points, count, 0.0F), clip);
    if (region.isEmpty()) {
        return;
    }
    mArea.begin(region);
    for (std::size_t i = 2; i < count; ++i) {
        mArea.addTriangle(points[i - 2], points[i - 1], points[i]);
    }
    for (int y = region.top; y < region.bottom; ++y) {
        blendRow(image.row(static_cast<std::size_t>(y)) + region.left, mArea.resolveRow(y), region.width(),
                 paint);
    }
}

void Rasterizer::strokeLine(Image& image, const raster::PixelRect& clip, const glm::vec2* points,
                            std::size_t count, float width, const Paint& paint) {
    const float outlined = width + 2.0F * raster::OUTLINE_WIDTH;
    const raster::PixelRect region = raster::touchedPixels(boundsOf(points, count, outlined), clip);
    if (region.isEmpty()) {
        return;
    }
    mStrokes.begin(region);
    mOutlines.begin(region);
    for (std::size_t i = 1; i < count; ++i) {
        mStrokes.addStroke(points[i - 1], points[i], width);
        mOutlines.addStroke(points[i - 1], points[i], outlined);
    }
    for (int y = region.top; y < region.bottom; ++y) {
        blendOutlined(image.row(static_cast<std::size_t>(y)) + region.left, mStrokes.row(y), mOutlines.row(y),
                      region.width(), paint);
    }
}

void Rasterizer::strokeSegments(Image& image, const raster::PixelRect& clip, const raster::Box& frame,
                                const glm::vec2* points, std::size_t count, float width, const Paint& paint) {
    const raster::PixelRect region = raster::touchedPixels(boundsOf(points, count, width), clip);
    if (region.isEmpty()) {
        return;
    }
    mStrokes.begin(region);
    for (std::size_t i = 1; i < count; i += 2) {
        raster::Box box;
        if (raster::alignLine(points[i - 1], points[i], width, frame, box)) {
            mStrokes.addBox(box);
        } else {
            mStrokes.addStroke(points[i - 1], points[i], width);
        }
    }
    blendStrokes(image, region, mStrokes, paint);
}

void Rasterizer::blendGlyph(Image& image, int firstColumn, const Paint& paint) const {
    const raster::PixelRect& pixels = mGlyph.pixels();
    const int left = std::max(pixels.left, firstColumn);
    for (int y = pixels.top; y < pixels.bottom; ++y) {
        blendOutlined(image.row(static_cast<std::size_t>(y)) + left, mGlyph.ink(y) + (left - pixels.left),
                      mGlyph.outline(y) + (left - pixels.left), pixels.right - left, paint);
    }
}

void Rasterizer::drawImage(Image& image, const raster::PixelRect& clip, const Image& source,
                           const raster::Box& box) {
    if (!mColumns.prepare(box.left, box.right, static_cast<int>(source.mWidth), clip.left, clip.right) ||
        !mRows.prepare(box.top, box.bottom, static_cast<int>(source.mHeight), clip.top, clip.bottom)) {
        return;
    }
    const std::size_t width = source.mWidth;
    for (int y = mRows.first(); y < mRows.end(); ++y) {
        const raster::AxisFilter::Taps& rows = mRows.taps(y);
        const float* rowWeights = mRows.weights(rows);
        // Four sums a column: colours weighted with their alpha, then the alpha.
        mSums.assign(width * 4, 0.0F);
        for (std::size_t j = 0; j < rows.count; ++j) {
            const Pixel* pixels = source.row(rows.first + j);
            for (std::size_t i = 0; i < width; ++i) {
                const float alpha = rowWeights[j] * static_cast<float>(pixels[i].alpha);
                float* sums = mSums.data() + i * 4;
                sums[0] += alpha * static_cast<float>(pixels[i].red);
                sums[1] += alpha * static_cast<float>(pixels[i].green);
                sums[2] += alpha * static_cast<float>(pixels[i].blue);
                sums[3] += alpha;
            }
        }
        Pixel* target = image.row(static_cast<std::size_t>(y));
        for (int x = mColumns.first(); x < mColumns.end(); ++x) {
            const raster::AxisFilter::Taps& columns = mColumns.taps(x);
            const float* columnWeights = mColumns.weights(columns);
            float mean[4] = {};
            for (std::size_t i = 0; i < columns.count; ++i) {
                const float* sums = mSums.data() + (columns.first + i) * 4;
                for (int channel = 0; channel < 4; ++channel) {
                    mean[channel] += columnWeights[i] * sums[channel];
                }
            }
            if (mean[3] > 0.0F) {
                const float scale = 1.0F / (mean[3] * 255.0F);
                const Paint paint =
                    makePaint({mean[0] * scale, mean[1] * scale, mean[2] * scale, mean[3] / 255.0F});
                blendOver(target[x], paint.color, toAlpha(paint.alpha));
            }
        }
    }
}

}  // namespace software
