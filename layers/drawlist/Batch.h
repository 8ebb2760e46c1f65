#pragma once

#include <glm/vec2.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "drawlist/Paint.h"
#include "raster/Geometry.h"

namespace drawlist {

/// A corner of a triangle as the vertex buffer has it: two floats, two unsigned shorts that are not
/// normalised, four normalised unsigned bytes.
struct Vertex {
    float x;  ///< surface pixels, y downwards
    float y;
    std::uint16_t u;  ///< texels of the glyph texture, or pixels from the top-left one of picturePixels()
    std::uint16_t v;
    std::array<std::uint8_t, 4> color;  ///< straight; the alpha carries the coverage of solid areas
};

static_assert(sizeof(Vertex) == 16, "uploaded as it is");

/// A corner of a triangle whose coverage, 0..1, changes from corner to corner; of a stroke that has a
/// profile, the place across it, from 0 on one side to 1 on the other.
struct Corner {
    glm::vec2 point;
    float coverage;
};

/// Pixels that shapes are cut to.
struct Clip {
    explicit Clip(const raster::PixelRect& pixels)
        : left(static_cast<float>(pixels.mLeft)),
          top(static_cast<float>(pixels.mTop)),
          right(static_cast<float>(pixels.mRight)),
          bottom(static_cast<float>(pixels.mBottom)) {}

    /// False for what is not a number.
    bool contains(const glm::vec2& point) const {
        return point.x >= left && point.x <= right && point.y >= top && point.y <= bottom;
    }

    float left;
    float top;
    float right;
    float bottom;
};

/// The triangles of one drawing, in their order, each three vertices. Cut to the clip here, so that a clip
/// needs no drawing call of its own. What is not finite is left out. Keeps its memory from use to use.
class Batch {
public:
    /// The vertices from mFirst on, mCount of them.
    struct Range {
        std::size_t mFirst = 0;
        std::size_t mCount = 0;
    };

    /// Starts anew for a surface of these pixels, without clip.
    void begin(const raster::PixelRect& surface);

    /// Until clearClip(), nothing reaches beyond these pixels.
    void setClip(const raster::PixelRect& clip) { mClip = raster::intersect(clip, mSurface); }
    void clearClip() { mClip = mSurface; }
    const raster::PixelRect& clip() const { return mClip; }

    /// By exact area: fractional edges cover their pixels in part.
    void addRect(const raster::Box& box, const Paint& paint) { addRect(box, paint, mClip); }

    /// The part of it inside `clip`, which lies inside the batch's own clip.
    void addRect(const raster::Box& box, const Paint& paint, const raster::PixelRect& clip);

    /// Texels of the glyph texture from (u, v) on, one for each pixel.
    void addTexels(const raster::PixelRect& pixels, int u, int v, const Paint& paint);

    /// A triangle inside `clip`, which lies inside the batch's own clip.
    void addTriangle(const Corner& a, const Corner& b, const Corner& c, const Paint& paint, const Clip& clip);

    /// A quadrilateral in the order of its outline, as the triangles of its first corner.
    void addQuad(const Corner& a, const Corner& b, const Corner& c, const Corner& d, const Paint& paint,
                 const Clip& clip);

    /// The application's picture in the box. Of several in one drawing only the first is shown.
    void addPicture(const raster::Box& box);

    /// Vertices of the drawing before once more; where they are now.
    Range repeat(const Range& last);

    const Vertex* vertices() const { return mVertices.data(); }
    std::size_t vertexCount() const { return mCount; }

    /// Whether the drawing before this one had the same vertices.
    bool isRepeated() const;

    /// The vertices of the application's picture; none without one.
    const Range& picture() const { return mPicture; }

    /// Where all of the picture would lie on the surface, and the pixels of it that are shown. Only while
    /// picture() has vertices.
    const raster::Box& pictureBox() const { return mPictureBox; }
    const raster::PixelRect& picturePixels() const { return mPicturePixels; }

private:
    /// Texel coordinates at a box's left, top, right and bottom edges.
    using Texels = std::array<std::uint16_t, 4>;

    template <class TexelsOf>
    void addPieces(const raster::Box& box, const Paint& paint, const raster::PixelRect& clip,
                   TexelsOf texelsOf);
    void addPixels(const raster::PixelRect& pixels, const Texels& texels,
                   const std::array<std::uint8_t, 4>& color);
    void addCorners(const Corner& a, const Corner& b, const Corner& c, const Paint& paint);

    /// Room for that many more vertices, to be written at once.
    Vertex* grow(std::size_t count) {
        const std::size_t first = mCount;
        mCount += count;
        if (mCount > mVertices.size()) {
            makeRoom();
        }
        return mVertices.data() + first;
    }
    void makeRoom();

    raster::PixelRect mSurface;
    raster::PixelRect mClip;
    std::vector<Vertex> mVertices;  ///< room for more than are in use
    std::size_t mCount = 0;
    std::vector<Vertex> mLastVertices;  ///< of the drawing before
    std::size_t mLastCount = 0;
    Range mPicture;
    raster::Box mPictureBox;
    raster::PixelRect mPicturePixels;
};

}  // namespace drawlist
