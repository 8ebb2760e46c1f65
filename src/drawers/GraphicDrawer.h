#pragma once

#include "drawers/Drawer.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "utils/Export.h"

#include <glm/vec4.hpp>

#include <cstdint>
#include <memory>
#include <vector>

namespace drawer {

/// A scrolling graph: the last samples of one value over a background and a grid, the newest at the right
/// edge. Allocates nothing after construction.
class KORDANIX_EXPORT GraphicDrawer : public Drawer {
public:
    /// Takes a triangle strip for the area, a line strip for the curve, and what lies behind them. `capacity`
    /// is the number of samples, at least 1 (0 counts as 1). `valueType` names the value for frame dumps.
    GraphicDrawer(unsigned int capacity, std::unique_ptr<MeshDrawer> fill, std::unique_ptr<MeshDrawer> line,
                  std::unique_ptr<RectDrawer> background, std::unique_ptr<GridDrawer> grid,
                  gui::WidgetValueType valueType);
    ~GraphicDrawer() override;

    /// Background, grid, area, curve.
    void draw() override;

    /// Writes the newest sample into the value's slot: as an integer (cut to 0..2^64 - 1, NaN gives 0) or as
    /// a float, as gWidgetsMeta says. A slot that the table or the record does not have is left alone.
    void dump(Ostra::FrameDump& frameDump) override;

    /// Starts again from the newest sample, which becomes the maximum; the others become 0.
    void clear() override;

    /// Appends a sample; the maximum grows with it but never shrinks.
    void addValue(float value);

    /// Appends a sample, not above `maxValue`, and makes that the maximum. Older samples may exceed it.
    void addValue(float value, float maxValue);

    /// The curve takes the colour without its transparency.
    void setColor(const glm::vec4& color);

    void drawBackground();
    void drawGrid();

    /// Area and curve, from the current samples.
    void drawGraphic();

    /// Gives the vertices their heights: 0 (drawn as if it were 1) near the bottom edge, mMaxValue at the top
    /// edge. Not clamped: larger samples rise above the top edge, negative ones sink below the bottom edge. A
    /// sample that has no finite height (NaN, infinite, or against such a maximum) is drawn at the bottom.
    void recalculateMesh();

    std::unique_ptr<MeshDrawer>
        mFillMesh;  ///< for each sample its point and the one below on the bottom edge
    std::unique_ptr<MeshDrawer> mLineMesh;  ///< for each sample its point
    std::unique_ptr<RectDrawer> mBackground;
    std::unique_ptr<GridDrawer> mGrid;
    std::uint32_t mCapacity;
    std::vector<float> mValues;  ///< always mCapacity samples, oldest first
    float mMaxValue = 0.0F;
};

}  // namespace drawer
