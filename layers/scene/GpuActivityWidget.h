#pragma once

#include "scene/Canvas.h"
#include "scene/GpuCapture.h"
#include "scene/PrimitiveFactory.h"
#include "scene/WidgetView.h"

namespace drawer {
class FixedGraphicDrawer;
class RectDrawer;
class TextDrawer;
}  // namespace drawer

namespace scene {

class PassCaption;
class PassCellsRow;
class PassTimeline;

/// The captured frame. From top to bottom: the caption with the frame's number and length and the legend, the
/// passes with their values, the passes on a time line, and the activity of the vertex shaders with that of
/// the fragment shaders over it. The settings decide whether passes and graphs are shown. A device without
/// counters shows only captured passes.
class GpuActivityWidget : public WidgetView {
public:
    GpuActivityWidget(PrimitiveFactory& factory, core::RenderingApiType api, RenderPassSource* passes);

    bool isShown() const override;

    /// Whether the widget's upper part shows passes.
    bool isShowingPasses() const;

    bool onFrame() override;
    void refresh(figures::Metrics& metrics) override;
    void draw() override;
    void settle() override { mCapture.settle(); }

protected:
    void applySettings(const Canvas& canvas) override;

private:
    void showCapture();
    bool isMoving() const;

    GpuCapture mCapture;
    bool mHasPasses = false;  // of a captured frame
    Canvas mCanvas;           // of the last layout
    drawer::RectDrawer* mPanel;
    PassCaption* mCaption;
    PassCellsRow* mCells;
    PassTimeline* mTimeline;
    drawer::FixedGraphicDrawer* mVertex;
    drawer::FixedGraphicDrawer* mFragment;
    drawer::TextDrawer* mMessage;  // in the band while there is no activity to show
};

}  // namespace scene
