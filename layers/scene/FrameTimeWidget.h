#pragma once

#include "scene/Canvas.h"
#include "scene/FrameTimeBars.h"
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

/// The last frames, one bar for each, with the newest at the right. From bottom to top, a bar shows the
/// processor's time, the GPU's time and the rest of the swap call. So a program that waits for the screen has
/// a high upper part. Lines mark the screen's rate, or 60, and 30 frames a second if the scale includes them;
/// above the bars are their median, their 99th percentile and the longest time.
///
/// Takes the place of the shader activity if the device has no counters for that. When a frame's passes were
/// captured they take the upper part, and the bars get the band below.
class FrameTimeWidget : public WidgetView {
public:
    /// All arguments must outlive the widget.
    FrameTimeWidget(PrimitiveFactory& factory, const FrameTimes& times, const GpuActivityWidget& activity);

    bool isShown() const override;
    void enable() override;
    bool onFrame() override;
    void refresh(figures::Metrics& metrics) override;
    void draw() override;

protected:
    void applySettings(const Canvas& canvas) override;

private:
    static constexpr std::size_t PARTS = FrameTimeBars::PARTS;
    static constexpr std::size_t GPU_PART = 1;
    static constexpr std::size_t RATES = 2;

    struct RateLine {
        drawer::MeshDrawer* line = nullptr;
        float nanoseconds = 0.0F;  ///< of a frame at the rate
        drawer::TextDrawer* label = nullptr;
    };

    drawer::MeshDrawer* addBars(PrimitiveFactory& factory);
    void placeBars(const Canvas& canvas);
    void setTexts();
    void setScale(std::uint64_t median, std::uint64_t longest);
    void placeLines();

    const FrameTimes& mTimes;
    const GpuActivityWidget& mActivity;
    Canvas mCanvas;            // of the last layout
    bool mIsBand = false;      // the bars have only the band
    int mTimesShown = 1;       // of median, 99th percentile and longest
    bool mIsGpuKnown = false;  // of a recent frame
    float mTopNs = 0.0F;       // at the upper end of the bars; 0: nothing to show

    drawer::RectDrawer* mGround;
    FrameTimeBars mBars;
    std::array<drawer::TextDrawer*, PARTS> mLegends = {};
    std::array<RateLine, RATES> mLines;
    drawer::RectDrawer* mBackdrop;
    drawer::TextDrawer* mText;
    std::vector<std::uint64_t> mSorted;
};

}  // namespace scene
