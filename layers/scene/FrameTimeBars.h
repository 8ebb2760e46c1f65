#pragma once

#include "scene/Canvas.h"
#include "scene/FrameTimes.h"

#include <array>
#include <cstddef>
#include <glm/vec2.hpp>

namespace drawer {
class MeshDrawer;
}

namespace scene {

/// Bars of frame times, one for each frame, with the newest at the right. Whole pixels, so that they need no
/// edge to smooth. One thread.
class FrameTimeBars {
public:
    /// From the top: the rest of the swap call, the GPU's time, the processor's time.
    static constexpr std::size_t PARTS = 3;

    /// The drawers, of Topology::BARS, must outlive the bars.
    explicit FrameTimeBars(const std::array<drawer::MeshDrawer*, PARTS>& parts) : mParts(parts) {}

    drawer::MeshDrawer& part(std::size_t index) { return *mParts[index]; }

    /// Places the bars in canvas fractions, and empties them.
    void place(const glm::vec2& position, const glm::vec2& size, const Canvas& canvas);

    /// How many there is room for.
    std::size_t room() const { return mRoom; }

    /// Shows `count` frames, at most room(), from `times.ago(first)` on. A bar as high as the area takes
    /// `topNs`, which is above 0. Parts that are not shown leave no gap.
    void set(const FrameTimes& times, std::size_t first, std::size_t count, float topNs,
             const std::array<bool, PARTS>& isShown);

    void draw();

private:
    /// The rows of pixels up to the upper end of each part.
    using Bar = std::array<int, PARTS>;

    Bar toBar(const FrameTime& frame, const std::array<float, PARTS>& scales) const;
    void add(std::size_t part, const std::array<std::size_t, 2>& bars, const std::array<int, 2>& rows);

    std::array<drawer::MeshDrawer*, PARTS> mParts;
    std::size_t mRoom = 0;
    float mBarWidth = 0.0F;  // of 2.0, which is the whole width
    float mRows = 1.0F;      // of pixels that the bars may have
};

}  // namespace scene
