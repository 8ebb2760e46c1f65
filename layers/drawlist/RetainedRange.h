#pragma once

#include "drawers/Drawer.h"
#include "drawlist/DrawList.h"

#include <cstdint>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

namespace drawlist {

/// The vertices that a primitive wrote into the previous drawing. It can add them again instead of computing
/// them. The primitive itself compares what only it knows.
class RetainedRange {
public:
    /// Call it first. Returns whether everything that determines the triangles is as in the previous drawing,
    /// except for what the primitive compares itself.
    bool begin(const DrawList& list, const drawer::Drawer& drawer, const glm::vec4& color) {
        const Key key{drawer.mPosition,  drawer.mSize,     drawer.mTranslation, color,
                      list.batch.clip(), list.shape.width, list.shape.height,   list.glyphs.emptied()};
        const bool isSame = mDrawing + 1 == list.drawing && key == mKey;
        mKey = key;
        mDrawing = list.drawing;
        return isSame;
    }

    /// Adds the same vertices again.
    void repeat(Batch& batch) { mShape = batch.repeat(mShape, mIsSolid); }

    /// Keeps what was added anew.
    void keep(const Batch::Shape& shape, bool isSolid) {
        mShape = shape;
        mIsSolid = isSolid;
    }

private:
    struct Key {
        glm::vec2 position{0.0F};
        glm::vec2 size{0.0F};
        glm::vec3 translation{0.0F};
        glm::vec4 color{0.0F};
        raster::PixelRect clip;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        unsigned int emptied = 0;

        static bool isSame(const raster::PixelRect& a, const raster::PixelRect& b) {
            return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
        }
        bool operator==(const Key& other) const {
            return position == other.position && size == other.size && translation == other.translation &&
                   color == other.color && isSame(clip, other.clip) && width == other.width &&
                   height == other.height && emptied == other.emptied;
        }
    };

    Key mKey;
    Batch::Shape mShape;
    bool mIsSolid = false;
    unsigned int mDrawing = 0;
};

}  // namespace drawlist
