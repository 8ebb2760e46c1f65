#pragma once

#include "core/HWcounterThread.h"
#include "drawers/Drawer.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "utils/Export.h"

#include <glm/vec4.hpp>
#include <memory>
#include <vector>

namespace drawer {

/// A graph of one series of shader activity over a time interval. Keeps the meshes, not the records.
class KORDANIX_EXPORT FixedGraphicDrawer : public Drawer {
public:
    /// Takes a triangle strip for the area, a line strip for the curve, and what to draw behind them; then
    /// calls setData().
    FixedGraphicDrawer(std::unique_ptr<MeshDrawer> fill, std::unique_ptr<MeshDrawer> line,
                       std::unique_ptr<RectDrawer> background, std::unique_ptr<GridDrawer> grid,
                       const std::vector<core::ShaderActivity>& data, long double start, long double end);
    ~FixedGraphicDrawer() override;

    /// Draws the background, the grid, the area and the curve; nothing while there are no records.
    void draw() override;

    /// Shows the records (ascending in time) from `start` to `end`, in seconds, both included. The first
    /// record shown is at the left edge and the last one at the right edge, whatever the bounds; the others
    /// are where their time puts them. Activity 0 is on the bottom edge, 1 on the top edge; other values are
    /// clamped, NaN counts as 0.
    ///
    /// Records of a single instant are spread evenly over the width, and a single record is a level line
    /// across it. The same happens when the first or the last time is infinite or NaN. Between them, a record
    /// whose time is NaN is at the left edge.
    void setData(const std::vector<core::ShaderActivity>& data, long double start, long double end);

    /// Uses the colour for area and curve; the curve ignores its transparency.
    void setColor(const glm::vec4& color);
    void setGridColor(const glm::vec4& color);
    void setBackgroundColor(const glm::vec4& color);

    void drawBackground();
    void drawGrid();

    /// Draws the area and the curve, if the interval has any records.
    void drawGraphic();

    std::unique_ptr<MeshDrawer> mFillMesh;  ///< each record's point and the one below it on the bottom edge
    std::unique_ptr<MeshDrawer> mLineMesh;  ///< each record's point
    std::unique_ptr<RectDrawer> mBackground;
    std::unique_ptr<GridDrawer> mGrid;
    bool mIsEmpty = true;  ///< the last setData() got no records at all
};

}  // namespace drawer
