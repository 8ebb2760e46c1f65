#include "scene/GpuActivityWidget.h"

#include "drawers/FixedGraphicDrawer.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "figures/TextFormat.h"
#include "gui/WidgetsSettings.h"
#include "scene/Canvas.h"
#include "scene/RenderPassRows.h"
#include "scene/Style.h"

#include <memory>
#include <vector>

namespace scene {

namespace {

using Area = gui::RenderAreaType;

constexpr long double MS_PER_SECOND = 1000.0L;

std::unique_ptr<drawer::FixedGraphicDrawer> createGraph(PrimitiveFactory& factory) {
    return std::make_unique<drawer::FixedGraphicDrawer>(
        factory.createMesh(Topology::TRIANGLE_STRIP), factory.createMesh(Topology::LINE_STRIP),
        factory.createRect(), factory.createGrid(factory.createMesh(Topology::LINES)),
        std::vector<core::ShaderActivity>(), 0.0L, 0.0L);
}

/// Shows the series from the first sample on, for the frame's length, so that the graph matches the time line
/// above it; the whole series when the frame's length is not known.
void showSeries(drawer::FixedGraphicDrawer& graph, const std::vector<core::ShaderActivity>& series,
                const gui::FrameData& frame) {
    if (series.empty()) {
        graph.setData(series, 0.0L, 0.0L);
        return;
    }
    const long double start = series.front().time;
    const long double end =
        frame.isValid() ? start + (frame.mEndTime - frame.mStartTime) / MS_PER_SECOND : series.back().time;
    graph.setData(series, start, end);
}

}  // namespace

GpuActivityWidget::GpuActivityWidget(PrimitiveFactory& factory, core::RenderingApiType api,
                                     RenderPassSource* passes)
    : WidgetView(gui::WidgetType::GPU_ACTIVITY),
      mCapture(api, passes),
      mCanvas(factory.getSurfaceSize()),
      mPanel(&place(factory.createRect(), Area::GPU_ACTIVITY_WHOLE)),
      mCaption(&place(std::make_unique<PassCaption>(factory), Area::GPU_ACTIVITY_LINE_1)),
      mCells(&place(std::make_unique<PassCellsRow>(factory), Area::GPU_ACTIVITY_LINE_2)),
      mTimeline(&place(std::make_unique<PassTimeline>(factory), Area::GPU_ACTIVITY_LINE_3)),
      mVertex(&place(createGraph(factory), Area::GPU_ACTIVITY_BAND)),
      mFragment(&place(createGraph(factory), Area::GPU_ACTIVITY_BAND_OVERLAY)),
      mMessage(&place(factory.createText(), Area::GPU_ACTIVITY_BAND_OVERLAY)) {
    mMessage->setText("No frame captured");
    mMessage->setTextGravity(gui::TextGravity::CENTER);
}

void GpuActivityWidget::applySettings(const Canvas& canvas) {
    const auto& settings = gui::WidgetsSettings::getWidgets().mGpuActivity;
    mPanel->mColor = backgroundColor();

    mCells->mEnabled = settings.mRenderpass.getValue();
    mTimeline->mEnabled = mCells->mEnabled;

    mVertex->mEnabled = settings.mVertexLoad.mEnabled.getValue();
    mFragment->mEnabled = settings.mFragmentLoad.mEnabled.getValue();
    const unsigned int shares = 1 + (mVertex->mEnabled ? 1 : 0) + (mFragment->mEnabled ? 1 : 0);
    mVertex->setColor(settings.mVertexLoad.getGraphColor(shares));
    mFragment->setColor(settings.mFragmentLoad.getGraphColor(shares));
    mVertex->setBackgroundColor(noColor());
    mVertex->setGridColor(gridColor());

    // The second legend covers the end of the first. With the fragment shaders off nothing covers it, so the
    // first legend must not have that end.
    const bool hasCounters = GpuCapture::hasCounters();
    mCaption->mFrameText->setTextColor(plainTextColor());
    mCaption->mVertexLegend->setTextColor(hasCounters ? settings.mVertexLoad.getTextColor() : noColor());
    mCaption->mVertexLegend->setText(mFragment->mEnabled ? "@Vertex @Fragment" : "@Vertex");
    mCaption->mFragmentLegend->setTextColor(hasCounters ? settings.mFragmentLoad.getTextColor() : noColor());
    mCanvas = canvas;
    mCaption->fitTexts(mCanvas);

    mMessage->setTextColor(plainTextColor());
    setTextHeight(*mMessage, NOTE_TEXT_HEIGHT, canvas);
    mMessage->mEnabled = mVertex->mEnabled || mFragment->mEnabled;
}

bool GpuActivityWidget::isShown() const {
    // The frame times use the same widget and switch it on for themselves.
    return WidgetView::isShown() && gui::WidgetsSettings::getWidgets().mGpuActivity.enabled();
}

bool GpuActivityWidget::isShowingPasses() const {
    return mHasPasses && isShown();
}

bool GpuActivityWidget::onFrame() {
    const bool isCaptured = mCapture.onFrame();
    if (isCaptured) {
        showCapture();
    }
    return isCaptured || isMoving();
}

bool GpuActivityWidget::isMoving() const {
    return mCells->mEnabled && mCells->mTextWidth > 2.0F * mCells->mSize.x;
}

void GpuActivityWidget::refresh(figures::Metrics&) {
    // Only captures change it.
}

void GpuActivityWidget::showCapture() {
    showSeries(*mVertex, mCapture.mVertexActivity, mCapture.mFrame);
    showSeries(*mFragment, mCapture.mFragmentActivity, mCapture.mFrame);
    if (mVertex->mIsEmpty && mFragment->mIsEmpty) {
        mMessage->setText(std::string("Shader activity ") + figures::NOT_AVAILABLE);
    }
    if (mCapture.mFrame.isValid()) {
        mHasPasses = true;
        mCells->addFrameInfo(mCapture.mFrame);
        mTimeline->addFrameInfo(mCapture.mFrame);
        mCaption->setFrameIdAndDuration(mCapture.mFrame.mFrameId,
                                        mCapture.mFrame.mEndTime - mCapture.mFrame.mStartTime);
        mCaption->fitTexts(mCanvas);
    }
}

void GpuActivityWidget::draw() {
    if (!GpuCapture::hasCounters() && !isShowingPasses()) {
        return;
    }
    mPanel->draw();
    mCaption->draw();
    if (mCells->mEnabled) {
        mCells->draw();
        mTimeline->draw();
    }
    if (!GpuCapture::hasCounters() || (!mVertex->mEnabled && !mFragment->mEnabled)) {
        return;
    }
    // One background and grid for both graphs, even without samples.
    mVertex->drawBackground();
    mVertex->drawGrid();
    if (mVertex->mIsEmpty && mFragment->mIsEmpty) {
        mMessage->draw();
        return;
    }
    // As in the other widgets, no fill covers a line.
    for (drawer::FixedGraphicDrawer* graph : {mVertex, mFragment}) {
        if (graph->mEnabled) {
            drawMesh(*graph, *graph->mFillMesh);
        }
    }
    for (drawer::FixedGraphicDrawer* graph : {mVertex, mFragment}) {
        if (graph->mEnabled) {
            drawMesh(*graph, *graph->mLineMesh);
        }
    }
}

}  // namespace scene
