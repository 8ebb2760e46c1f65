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

/// A graph of one series of shader activity over an interval of time. Keeps no records, only their meshes.
class KORDANIX_EXPORT FixedGraphicDrawer : public Drawer {
public:
    /// Takes a triangle strip for the area, a line strip for the curve, and what lies behind them; then as
    /// setData().
    FixedGraphicDrawer(std::unique_ptr<MeshDrawer> fill, std::unique_ptr<MeshDrawer> line,
                       std::unique_ptr<RectDrawer> background, std::unique_ptr<GridDrawer> grid,
                       const std::vector<core::ShaderActivity>& data, long double start, long double end);
    ~FixedGraphicDrawer() override;

    /// Background, grid, area, curve; nothing at all while there are no records.
    void draw() override;

    /// Shows the records (ascending in time) from `start` to `end`, in seconds, both included. Whatever the
    /// bounds, the first record shown stands at the left edge and the last one at the right edge, the others
    /// where their time puts them. Activity 0 lies on the bottom edge, 1 on the top edge; it is clamped to
    /// that range, NaN counts as 0.
    ///
    /// Records of a single instant have no extent in time: they are spread evenly over the width, and a
    /// record alone is a level line across it. The same holds for a time that is infinite or not a number at
    /// either end; between the ends, a record whose time is not a number stands at the left edge.
    void setData(const std::vector<core::ShaderActivity>& data, long double start, long double end);

    /// The curve takes the colour without its transparency.
    void setColor(const glm::vec4& color);
    void setGridColor(const glm::vec4& color);
    void setBackgroundColor(const glm::vec4& color);

    void drawBackground();
    void drawGrid();

    /// Area and curve, if the interval has any records.
    void drawGraphic();

    std::unique_ptr<MeshDrawer>
        mFillMesh;  ///< for each record its point and the one below on the bottom edge
    std::unique_ptr<MeshDrawer> mLineMesh;  ///< for each record its point
    std::unique_ptr<RectDrawer> mBackground;
    std::unique_ptr<GridDrawer> mGrid;
    bool mIsEmpty = true;  ///< the last setData() had no records, in the interval or out of it
};

}  // namespace drawer
