#pragma once

#include "drawlist/Paint.h"
#include "raster/Geometry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <glm/vec2.hpp>
#include <vector>

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

Vertex toVertex(const Corner& corner, const Paint& paint);

/// Another vertex of the same colour and place in the texture.
inline Vertex moved(Vertex vertex, const glm::vec2& to) {
    vertex.x = to.x;
    vertex.y = to.y;
    return vertex;
}

/// Pixels that shapes are cut to.
struct Clip {
    explicit Clip(const raster::PixelRect& pixels)
        : left(static_cast<float>(pixels.left)),
          top(static_cast<float>(pixels.top)),
          right(static_cast<float>(pixels.right)),
          bottom(static_cast<float>(pixels.bottom)) {}

    /// False for what is not a number.
    bool contains(const glm::vec2& point) const {
        return point.x >= left && point.x <= right && point.y >= top && point.y <= bottom;
    }

    float left;
    float top;
    float right;
    float bottom;
};

/// The triangles of one drawing, each three vertices. Cut to the clip here, so that a clip needs no drawing
/// call of its own. Skips coordinates that are not finite. Reuses its memory.
///
/// They are in parts, which are drawn one after the other. Within a part the order is that of the calls. A
/// solid shape belongs to the first part unless it lies on something that was drawn before.
class Batch {
public:
    enum class Part : std::uint8_t {
        SOLID,    ///< areas, which need no texture
        PICTURE,  ///< the application's
        REST
    };
    static constexpr std::size_t PARTS = 3;

    /// `count` vertices of a part, from `first` on.
    struct Range {
        std::size_t first = 0;
        std::size_t count = 0;
    };

    /// What was added between beginSolid() or beginShape() and endShape().
    struct Shape {
        Part part = Part::REST;
        Range vertices;
        raster::PixelRect bounds;
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

    /// Whole pixels inside the batch's own clip.
    void addPixels(const raster::PixelRect& pixels, const Paint& paint);

    /// Texels of the glyph texture from (u, v) on, one for each pixel.
    void addTexels(const raster::PixelRect& pixels, int u, int v, const Paint& paint);

    /// Corners of a convex polygon; a quadrilateral has at most as many after it has been cut at four edges.
    using Polygon = std::array<Corner, 8>;

    /// A triangle inside `clip`, which lies inside the batch's own clip.
    void addTriangle(const Corner& a, const Corner& b, const Corner& c, const Paint& paint, const Clip& clip);

    /// A convex quadrilateral in the order of its outline, as the triangles of its first corner.
    void addQuad(const Corner& a, const Corner& b, const Corner& c, const Corner& d, const Paint& paint,
                 const Clip& clip);

    /// Adds that many vertices inside the clip, three a triangle, which the caller writes at once.
    Vertex* grow(std::size_t count) {
        Stream& to = stream(mPart);
        const std::size_t first = to.count;
        to.count += count;
        if (to.count > to.vertices.size()) {
            to.makeRoom();
        }
        return to.vertices.data() + first;
    }

    /// The application's picture in the box. Of several in one drawing only the first is shown. It covers
    /// solid shapes that were added before, and no others.
    void addPicture(const raster::Box& box);

    /// Begins a shape of solid areas within these pixels.
    void beginSolid(const raster::PixelRect& bounds);

    /// Begins a shape of any kind; outside of shapes, the same holds.
    void beginShape();

    /// Ends the shape, which lies within these pixels.
    Shape endShape(const raster::PixelRect& bounds);

    /// Adds a shape of the drawing before once more; where it is now.
    Shape repeat(const Shape& last, bool isSolid);

    const Vertex* vertices(Part part) const { return stream(part).vertices.data(); }
    std::size_t vertexCount(Part part) const { return stream(part).count; }

    /// Of all parts.
    std::size_t vertexCount() const;

    /// Copies the vertices of all parts, in their order.
    void copyVertices(Vertex* to) const;

    /// Whether the drawing before this one had the same vertices.
    bool isRepeated() const;

    bool hasPicture() const { return vertexCount(Part::PICTURE) != 0; }

    /// Where all of the picture would lie on the surface, and the pixels of it that are shown. Only while
    /// there is a picture.
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
    void addCut(Polygon corners, std::size_t count, const Paint& paint, const Clip& clip);
    void addCorners(const Corner& a, const Corner& b, const Corner& c, const Paint& paint);

    /// The vertices of a part.
    struct Stream {
        std::vector<Vertex> vertices;  ///< room for more than are in use
        std::size_t count = 0;
        std::vector<Vertex> lastVertices;  ///< of the drawing before
        std::size_t lastCount = 0;

        bool isRepeated() const;
        void makeRoom();
    };

    const Stream& stream(Part part) const { return mStreams[static_cast<std::size_t>(part)]; }
    Stream& stream(Part part) { return mStreams[static_cast<std::size_t>(part)]; }

    /// Whether something was drawn within these bounds that is not in the first part.
    bool isCovered(const raster::PixelRect& bounds) const;

    raster::PixelRect mSurface;
    raster::PixelRect mClip;
    std::array<Stream, PARTS> mStreams;
    Part mPart = Part::REST;                  ///< to which vertices are added
    std::size_t mShapeStart = 0;              ///< in that part
    std::vector<raster::PixelRect> mCovered;  ///< by what is not in the first part
    raster::Box mPictureBox;
    raster::PixelRect mPicturePixels;
};

}  // namespace drawlist
