#pragma once

#include "raster/AxisFilter.h"
#include "raster/Geometry.h"
#include "raster/OutlinedGlyph.h"
#include "software/AreaMask.h"
#include "software/Blend.h"
#include "software/Image.h"
#include "software/StrokeMask.h"

#include <cstddef>
#include <cstdint>
#include <glm/vec2.hpp>
#include <vector>

namespace software {

/// Draws anti-aliased shapes over a picture. Every shape is blended once, however many pieces it is made
/// of, so that translucent ones have no seams. All positions are surface pixels and may lie anywhere or be
/// no numbers at all; nothing outside `clip` (which must lie inside the picture) is touched and no more
/// work is done than the clip asks for. Holds only working memory, which it keeps from call to call.
class Rasterizer {
public:
    /// By exact area: fractional edges cover their pixels in part.
    static void fillRect(Image& image, const raster::PixelRect& clip, const raster::Box& box,
                         const Paint& paint);

    /// A triangle strip of `count` points.
    void fillStrip(Image& image, const raster::PixelRect& clip, const glm::vec2* points, std::size_t count,
                   const Paint& paint);

    /// A line through `count` points with round joints and ends, `width` pixels wide (at least 1), and its
    /// outline.
    void strokeLine(Image& image, const raster::PixelRect& clip, const glm::vec2* points, std::size_t count,
                    float width, const Paint& paint);

    /// Separate lines, one for each two points. Horizontal and vertical ones are moved onto whole pixels
    /// inside `frame` and end square, so that a grid is crisp and even.
    void strokeSegments(Image& image, const raster::PixelRect& clip, const raster::Box& frame,
                        const glm::vec2* points, std::size_t count, float width, const Paint& paint);

    /// A glyph's texels scaled into the box by area averaging, and their outline; its neighbours in the
    /// bitmap never show. `firstColumn` is told the first column and the end of those that the glyph itself
    /// touches, and tells the first one that is to be drawn.
    template <class FirstColumn>
    void drawGlyph(Image& image, const raster::PixelRect& clip, const raster::TexelRect& texels,
                   const raster::Box& box, const Paint& paint, FirstColumn firstColumn) {
        if (mGlyph.prepare(texels, box, clip)) {
            blendGlyph(image, firstColumn(mGlyph.inkLeft(), mGlyph.inkEnd()), paint);
        }
    }

    /// A picture scaled into the box by area averaging. `source` must not be `image`.
    void drawImage(Image& image, const raster::PixelRect& clip, const Image& source, const raster::Box& box);

private:
    void blendGlyph(Image& image, int firstColumn, const Paint& paint) const;

    AreaMask mArea;
    StrokeMask mStrokes;
    StrokeMask mOutlines;
    raster::OutlinedGlyph mGlyph;
    raster::AxisFilter mColumns;
    raster::AxisFilter mRows;
    std::vector<float> mSums;
};

}  // namespace software
