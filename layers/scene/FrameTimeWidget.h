#pragma once

#include "scene/Canvas.h"
#include "scene/FrameTimes.h"
#include "scene/PrimitiveFactory.h"
#include "scene/WidgetView.h"

#include <array>
#include <cstdint>
#include <vector>

namespace drawer {
class MeshDrawer;
class RectDrawer;
class TextDrawer;
}  // namespace drawer

namespace scene {

class GpuActivityWidget;

/// The last frames, one bar for each and the newest at the right: from below the time of the processor, that
/// of the GPU and what remains of the swap call without either. So a program that waits for the screen has a
/// high upper part. Lines where 60 and 30 frames a second are, as far as the scale goes; above the bars their
/// median, their 99th percentile and the longest.
///
/// Stands where the shader activity does, unless the device has counters for that. When a frame's passes were
/// captured they have the upper part, and the bars the band below.
class FrameTimeWidget : public WidgetView {
public:
    /// All outlive the widget.
    FrameTimeWidget(PrimitiveFactory& factory, const FrameTimes& times, const GpuActivityWidget& activity);

    bool isShown() const override;
    void enable() override;
    bool onFrame() override;
    void refresh(figures::Metrics& metrics) override;
    void draw() override;

protected:
    void applySettings(const Canvas& canvas) override;

private:
    static constexpr std::size_t PARTS = 3;
    static constexpr std::size_t RATES = 2;

    /// Of one part of the bars. Each area reaches down to the bottom and is covered by the next one.
    struct Part {
        drawer::MeshDrawer* area = nullptr;
        drawer::TextDrawer* legend = nullptr;
    };
    struct RateLine {
        drawer::MeshDrawer* line = nullptr;
        drawer::TextDrawer* label = nullptr;
    };

    void placeBars(const Canvas& canvas);
    void setBar(std::size_t bar, const FrameTime& frame);
    void setTexts();
    void setScale(std::uint64_t median, std::uint64_t longest);
    void placeLines();

    const FrameTimes& mTimes;
    const GpuActivityWidget& mActivity;
    Canvas mCanvas;         // of the last layout
    bool mIsBand = false;   // the bars have only the band
    std::size_t mBars = 0;  // that there is room for
    float mTopNs = 0.0F;    // at the upper end of the bars; 0: nothing to show

    drawer::RectDrawer* mGround;
    std::array<Part, PARTS> mParts;
    std::array<RateLine, RATES> mLines;
    drawer::RectDrawer* mBackdrop;
    drawer::TextDrawer* mText;
    std::vector<std::uint64_t> mSorted;
};

}  // namespace scene
