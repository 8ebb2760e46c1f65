#pragma once

#include "drawers/Drawer.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "utils/Export.h"

#include <cstdint>
#include <glm/vec4.hpp>
#include <memory>
#include <vector>

namespace drawer {

/// A scrolling graph: the last samples of one value over a background and a grid, with the newest at the
/// right edge. Allocates nothing after construction.
class KORDANIX_EXPORT GraphicDrawer : public Drawer {
public:
    /// Takes a triangle strip for the area, a line strip for the curve, and what to draw behind them.
    /// `capacity` is the number of samples, at least 1 (0 counts as 1). `valueType` is the value's index in
    /// frame dumps.
    GraphicDrawer(unsigned int capacity, std::unique_ptr<MeshDrawer> fill, std::unique_ptr<MeshDrawer> line,
                  std::unique_ptr<RectDrawer> background, std::unique_ptr<GridDrawer> grid,
                  gui::WidgetValueType valueType);
    ~GraphicDrawer() override;

    /// Draws the background, the grid, the area and the curve.
    void draw() override;

    /// Writes the newest sample into the value's slot: as an integer (clamped to 0..2^64 - 1, NaN gives 0) or
    /// as a float, as gWidgetsMeta says. Writes nothing when the table or the record has no such slot.
    void dump(Ostra::FrameDump& frameDump) override;

    /// Keeps only the newest sample, which becomes the maximum; all others become 0.
    void clear() override;

    /// Appends a sample; the maximum grows when needed but never shrinks.
    void addValue(float value);

    /// Appends a sample, limited to `maxValue`, and sets the maximum to that. Older samples may exceed it.
    void addValue(float value, float maxValue);

    /// Uses the colour for area and curve; the curve ignores its transparency.
    void setColor(const glm::vec4& color);

    void drawBackground();
    void drawGrid();

    /// Draws the area and the curve of the current samples.
    void drawGraphic();

    /// Sets the heights of the vertices: 0 (drawn as if it were 1) near the bottom edge, mMaxValue at the top
    /// edge. Not clamped: larger samples rise above the top edge, negative ones sink below the bottom edge. A
    /// sample without a finite height (a NaN or infinite sample or maximum) is drawn at the bottom.
    void recalculateMesh();

    std::unique_ptr<MeshDrawer> mFillMesh;  ///< each sample's point and the one below it on the bottom edge
    std::unique_ptr<MeshDrawer> mLineMesh;  ///< each sample's point
    std::unique_ptr<RectDrawer> mBackground;
    std::unique_ptr<GridDrawer> mGrid;
    std::uint32_t mCapacity;
    std::vector<float> mValues;  ///< always mCapacity samples, oldest first
    float mMaxValue = 0.0F;
};

}  // namespace drawer
