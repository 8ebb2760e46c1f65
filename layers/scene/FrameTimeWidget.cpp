#include "scene/FrameTimeWidget.h"

#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "figures/TextFormat.h"
#include "gui/LayoutManager.h"
#include "gui/WidgetsSettings.h"
#include "scene/FrameTimeSettings.h"
#include "scene/GpuActivityWidget.h"
#include "scene/Style.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace scene {

namespace {

using Area = gui::RenderAreaType;
using Graph = gui::WidgetsSettings::Graph;

constexpr double NS_PER_MS = 1e6;

// Canvas units.
constexpr float LINE_HEIGHT = 12.0F;
constexpr float MARGIN = 6.0F;
constexpr float LEGEND_WIDTH = 42.0F;

/// Bars are cut at this multiple of the median, so that one long frame does not flatten all others.
constexpr std::uint64_t LARGEST_SHARE = 4;

/// How many of the latest frames may be left out because their GPU time is not known yet.
constexpr std::size_t GPU_DELAY = 8;

constexpr float NS_PER_S = 1e9F;
constexpr int USUAL_SCREEN_RATE = 60;
constexpr int HALF_RATE = 30;

/// As the settings know it, if they do.
int screenRate() {
    constexpr std::size_t LONGEST = 4;
    const std::string text = frameTimeSettings().screenRate.getValue();
    int rate = 0;
    for (const char digit : text) {
        rate = digit >= '0' && digit <= '9' && text.size() <= LONGEST ? 10 * rate + (digit - '0') : 0;
    }
    return rate > HALF_RATE ? rate : USUAL_SCREEN_RATE;
}

constexpr const char* PART_NAMES[] = {"@Swap", "@GPU", "@CPU"};

const Graph& settingsOf(std::size_t part) {
    const FrameTimeSettings& settings = frameTimeSettings();
    const Graph* const graphs[] = {&settings.swap, &settings.gpu, &settings.cpu};
    return *graphs[part];
}

std::string milliseconds(std::uint64_t nanoseconds) {
    const double ms = static_cast<double>(nanoseconds) / NS_PER_MS;
    return figures::formatNumber(ms, ms < 9.995 ? 2 : ms < 99.95 ? 1 : 0, "ms");
}

/// Rounds up to the next of 1, 1.5, 2, 3, 4, 6, 8, 10 times a power of ten, so that the scale rarely changes.
float roundUp(float value) {
    const float power = std::pow(10.0F, std::floor(std::log10(value)));
    for (const float step : {1.0F, 1.5F, 2.0F, 3.0F, 4.0F, 6.0F, 8.0F}) {
        if (value <= step * power) {
            return step * power;
        }
    }
    return 10.0F * power;
}

void setRect(drawer::Drawer& drawer, float x, float y, float width, float height) {
    drawer.mPosition = {x, y};
    drawer.mSize = {width, height};
}

}  // namespace

FrameTimeWidget::FrameTimeWidget(PrimitiveFactory& factory, const FrameTimes& times,
                                 const GpuActivityWidget& activity)
    : WidgetView(gui::WidgetType::GPU_ACTIVITY),
      mTimes(times),
      mActivity(activity),
      mCanvas(factory.getSurfaceSize()),
      mGround(&place(factory.createRect(), Area::GPU_ACTIVITY_WHOLE)),
      mBars({addBars(factory), addBars(factory), addBars(factory)}) {
    const auto addText = [&](const char* text, gui::TextGravity gravity) {
        drawer::TextDrawer& drawer = place(factory.createText(), Area::GPU_ACTIVITY_WHOLE);
        drawer.setText(text);
        drawer.setTextGravity(gravity);
        return &drawer;
    };
    for (std::size_t i = 0; i < PARTS; ++i) {
        mLegends[i] = addText(PART_NAMES[i], gui::TextGravity::RIGHT);
    }
    for (std::size_t i = 0; i < RATES; ++i) {
        mLines[i].line = &place(factory.createMesh(Topology::LINES), Area::GPU_ACTIVITY_WHOLE);
        mLines[i].label = addText("", gui::TextGravity::LEFT);
    }
    mBackdrop = &place(factory.createRect(), Area::GPU_ACTIVITY_WHOLE);
    mText = addText("", gui::TextGravity::LEFT);
    mSorted.reserve(FrameTimes::HISTORY);
    frameTimeSettings();
}

drawer::MeshDrawer* FrameTimeWidget::addBars(PrimitiveFactory& factory) {
    return &place(factory.createMesh(Topology::BARS), Area::GPU_ACTIVITY_WHOLE);
}

bool FrameTimeWidget::isShown() const {
    return frameTimeSettings().isOn.getValue() && !GpuCapture::hasCounters() && WidgetView::isShown();
}

void FrameTimeWidget::enable() {
    if (frameTimeSettings().isOn.getValue() && !GpuCapture::hasCounters()) {
        widget().mEnabled = true;
    }
}

void FrameTimeWidget::applySettings(const Canvas& canvas) {
    mCanvas = canvas;
    mIsBand = mActivity.isShowingPasses();
    mGround->mColor = mIsBand ? noColor() : backgroundColor();
    mBackdrop->mColor = backdropColor();
    mBackdrop->mEnabled = mIsBand;
    mText->setTextColor(plainTextColor());
    setTextHeight(*mText, NOTE_TEXT_HEIGHT, canvas);
    for (std::size_t i = 0; i < PARTS; ++i) {
        const Graph& graph = settingsOf(i);
        mBars.part(i).mColor = graph.getTextColor();
        mLegends[i]->mEnabled = graph.mEnabled.getValue();
        mLegends[i]->setTextColor(graph.getTextColor());
        setTextHeight(*mLegends[i], NOTE_TEXT_HEIGHT, canvas);
    }
    const int rates[RATES] = {screenRate(), HALF_RATE};
    for (std::size_t i = 0; i < RATES; ++i) {
        RateLine& rate = mLines[i];
        rate.nanoseconds = NS_PER_S / static_cast<float>(rates[i]);
        rate.label->setText(std::to_string(rates[i]));
        rate.line->mColor = gridColor();
        rate.label->setTextColor(plainTextColor());
        setTextHeight(*rate.label, NOTE_TEXT_HEIGHT, canvas);
    }
    placeBars(canvas);
    setTexts();
}

/// Places the line of texts, the bars and the lines over them.
void FrameTimeWidget::placeBars(const Canvas& canvas) {
    const glm::vec2 unit = 1.0F / canvas.units;
    const gui::RenderArea band = gui::LayoutManager::getInstance()->getRenderArea(Area::GPU_ACTIVITY_BAND);
    const glm::vec2 position = mGround->mPosition + (mIsBand ? glm::vec2(band.x, band.y) : glm::vec2(0.0F));
    const glm::vec2 size = mIsBand ? glm::vec2(band.width, band.height) : mGround->mSize;
    const float line = std::max(LINE_HEIGHT * unit.y, textHeight(NOTE_TEXT_HEIGHT, canvas));
    const float margin = MARGIN * unit.x;
    setRect(*mText, position.x + margin, position.y, size.x - 2.0F * margin, line);
    float right = position.x + size.x - margin;
    for (drawer::TextDrawer* const legend : mLegends) {
        right -= LEGEND_WIDTH * unit.x;
        setRect(*legend, right, position.y, LEGEND_WIDTH * unit.x, line);
    }
    mText->mSize.x = right - mText->mPosition.x;
    mTimesShown = 1;
    for (const char* const text : {"Frame 88.8ms  99% 88.8ms", "Frame 88.8ms  99% 88.8ms  Max 88.8ms"}) {
        const float pixels = 0.5F * lineWidth(text) * LINE_PIXELS;
        mTimesShown += pixels <= mText->mSize.x * canvas.pixels.x ? 1 : 0;
    }

    const float top = mIsBand ? 0.0F : line;
    const glm::vec2 areaPosition(position.x, position.y + top);
    const glm::vec2 areaSize(size.x, size.y - top);
    mBars.place(areaPosition, areaSize, canvas);
    for (const RateLine& rate : mLines) {
        rate.line->mPosition = areaPosition;
        rate.line->mSize = areaSize;
    }
    mTopNs = 0.0F;
}

bool FrameTimeWidget::onFrame() {
    if (mIsBand == mActivity.isShowingPasses()) {
        return false;
    }
    layout(mCanvas);
    return true;
}

void FrameTimeWidget::refresh(figures::Metrics&) {
    const std::size_t known = mTimes.size();
    std::size_t first = 0;
    while (first < std::min(known, GPU_DELAY) && mTimes.ago(first).gpu == FrameTime::NOT_MEASURED) {
        ++first;
    }
    mIsGpuKnown = first < std::min(known, GPU_DELAY);
    if (!mIsGpuKnown) {
        first = 0;
    }
    const std::size_t bars = std::min(mBars.room(), known - first);
    mSorted.resize(bars);
    for (std::size_t i = 0; i < bars; ++i) {
        mSorted[i] = mTimes.ago(first + i).total;
    }
    setTexts();
    if (mTopNs == 0.0F) {
        return;
    }
    mBars.set(mTimes, first, bars, mTopNs,
              {mLegends[0]->mEnabled, mLegends[1]->mEnabled, mLegends[2]->mEnabled});
    placeLines();
}

/// Writes the statistics of mSorted, and chooses the scale.
void FrameTimeWidget::setTexts() {
    auto start = mSorted.begin();  // of what is not in order yet
    const auto at = [&](std::size_t index) {
        const auto place = mSorted.begin() + static_cast<std::ptrdiff_t>(index);
        std::nth_element(start, place, mSorted.end());
        start = place;
        return *place;
    };
    mTopNs = 0.0F;
    if (mSorted.empty()) {
        return;
    }
    const std::size_t count = mSorted.size();
    const std::uint64_t median = at(count / 2);
    const std::uint64_t slow = at((count * 99 + 99) / 100 - 1);
    const std::uint64_t longest = *std::max_element(start, mSorted.end());
    setScale(median, longest);
    std::string text = "Frame " + milliseconds(median);
    if (mTimesShown > 1) {
        text += "  99% " + milliseconds(slow);
    }
    if (mTimesShown > 2) {
        text += "  Max " + milliseconds(longest);
    }
    mText->setText(text);
    if (!mIsBand) {
        return;
    }
    const glm::vec2 size = measureText(*mText, mCanvas);
    setRect(*mBackdrop, mText->mPosition.x, mText->mPosition.y + 0.5F * (mText->mSize.y - size.y), size.x,
            size.y);
    inset(*mBackdrop, {-0.5F * MARGIN, 0.0F}, mCanvas);
}

void FrameTimeWidget::setScale(std::uint64_t median, std::uint64_t longest) {
    const auto highest = static_cast<float>(std::min(longest, LARGEST_SHARE * median));
    mTopNs = highest > 0.0F ? roundUp(highest) : 0.0F;
}

void FrameTimeWidget::placeLines() {
    for (std::size_t i = 0; i < RATES; ++i) {
        const RateLine& rate = mLines[i];
        const float height = rate.nanoseconds / mTopNs;
        rate.line->mEnabled = height < 1.0F;
        const float y = 1.0F - 2.0F * height;
        rate.line->mVertices.assign({{-1.0F, y}, {1.0F, y}});
        // The label is on its line, if there is room: the lower line's must end below the upper one.
        const drawer::Drawer& area = *rate.line;
        const float label = textHeight(NOTE_TEXT_HEIGHT, mCanvas);
        const float lineY = area.mPosition.y + area.mSize.y * (1.0F - height);
        setRect(*rate.label, area.mPosition.x + 0.5F * MARGIN / mCanvas.units.x, lineY - label,
                LEGEND_WIDTH / mCanvas.units.x, label);
        const float roomAbove =
            i + 1 < RATES ? area.mSize.y * (mLines[i + 1].nanoseconds - rate.nanoseconds) / mTopNs : label;
        rate.label->mEnabled =
            rate.line->mEnabled && !mIsBand && roomAbove >= label && lineY - label >= area.mPosition.y;
    }
}

void FrameTimeWidget::draw() {
    mGround->draw();
    if (mTopNs > 0.0F) {
        mBars.draw();
        for (const RateLine& rate : mLines) {
            if (rate.line->mEnabled) {
                rate.line->draw();
            }
            if (rate.label->mEnabled) {
                rate.label->draw();
            }
        }
    }
    if (mBackdrop->mEnabled && mTopNs > 0.0F) {
        mBackdrop->draw();
    }
    mText->draw();
    for (std::size_t i = 0; i < PARTS; ++i) {
        const bool isExplained = i != GPU_PART || mIsGpuKnown;
        if (mLegends[i]->mEnabled && isExplained && !mIsBand) {
            mLegends[i]->draw();
        }
    }
}

}  // namespace scene
