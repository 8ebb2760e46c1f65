#include "gui/LayoutManager.h"

#include "drawers/Drawer.h"
#include "gui/WidgetsSettings.h"

#include <algorithm>

namespace gui {
namespace {

using Position = WidgetsSettings::Position;

constexpr std::uint32_t WIDGET_COUNT = 5;
constexpr auto LAST_POSITION = static_cast<std::uint32_t>(Position::BOTTOM_RIGHT);

RenderAreaType outlineOf(std::uint32_t widgetIndex) {
    return static_cast<RenderAreaType>(static_cast<std::uint32_t>(RenderAreaType::OUTLINE_FPS) + widgetIndex);
}

void normalise(std::vector<RenderArea>& areas, float canvasWidth, float canvasHeight) {
    for (RenderArea& area : areas) {
        area.x /= canvasWidth;
        area.y /= canvasHeight;
        area.width /= canvasWidth;
        area.height /= canvasHeight;
    }
}

/// Whether two extents share more than an edge.
bool extentsOverlap(float startA, float sizeA, float startB, float sizeB) {
    const float span = std::max(startA + sizeA, startB + sizeB) - std::min(startA, startB);
    return sizeA + sizeB > span;
}

bool overlap(const glm::vec4& a, const glm::vec4& b) {
    return extentsOverlap(a.x, a.z, b.x, b.z) && extentsOverlap(a.y, a.w, b.y, b.w);
}

/// Moves the widget to x. Returns whether it may stay there: inside the canvas, over no other widget of the
/// row.
bool tryAt(const LinearLayout& row, Widget* widget, float x) {
    glm::vec4& rect = widget->mRect;
    rect.x = x;
    rect.y = 0.0F;
    return rect.x >= 0.0F && rect.x + rect.z <= 1.0F &&
           std::none_of(row.mWidgets.begin(), row.mWidgets.end(),
                        [&rect](const Widget* neighbour) { return overlap(rect, neighbour->mRect); });
}

bool tryToAddToCenter(LinearLayout& row, Widget* widget) {
    if (!tryAt(row, widget, 0.5F - widget->mRect.z / 2.0F)) {
        return false;
    }
    const auto next =
        std::find_if(row.mWidgets.begin(), row.mWidgets.end(),
                     [widget](const Widget* neighbour) { return neighbour->mRect.x < widget->mRect.x; });
    row.mWidgets.insert(next, widget);
    return true;
}

bool isMiddle(Position position) {
    return position == Position::CENTER_LEFT || position == Position::CENTER_RIGHT;
}

bool isBottom(Position position) {
    return position == Position::BOTTOM_LEFT || position == Position::BOTTOM_CENTER ||
           position == Position::BOTTOM_RIGHT;
}

Position positionOf(const Widget& widget) {
    return static_cast<Position>(widget.mPosition);
}

void moveTo(Widget& widget, Position position) {
    widget.mPosition = static_cast<std::int32_t>(position);
}

/// Aligns the row's widgets with its line: the top of top rows, the bottom of bottom rows, the centre of the
/// middle row. Returns the height of the highest widget.
float placeOnLine(const LinearLayout& row, float line) {
    float rowHeight = 0.0F;
    for (Widget* widget : row.mWidgets) {
        const float height = widget->mRect.w;
        rowHeight = std::max(rowHeight, height);
        widget->mRect.y = line;
        if (isBottom(positionOf(*widget))) {
            widget->mRect.y -= height;
        } else if (isMiddle(positionOf(*widget))) {
            widget->mRect.y -= height / 2.0F;
        }
    }
    return rowHeight;
}

/// The rows of one layout. The canvas has room for only one middle row.
struct Rows {
    std::vector<LinearLayout> top;
    LinearLayout middle;
    std::vector<LinearLayout> bottom;
};

/// Puts the widget into the first row that takes it; changes its position if that row is elsewhere.
void placeInRows(Widget* widget, Rows& rows, glm::vec2& margin, glm::vec2& spacing) {
    if (isMiddle(positionOf(*widget))) {
        if (rows.middle.tryToAdd(widget)) {
            return;
        }
        moveTo(*widget, Position::TOP_LEFT);
    }
    if (!isBottom(positionOf(*widget))) {
        if (addToLayout(widget, rows.top, margin, spacing)) {
            return;
        }
        moveTo(*widget, Position::BOTTOM_LEFT);
    }
    addToLayout(widget, rows.bottom, margin, spacing);
}

}  // namespace

bool LinearLayout::tryToAdd(Widget* widget) {
    switch (positionOf(*widget)) {
        case Position::TOP_LEFT:
        case Position::CENTER_LEFT:
        case Position::BOTTOM_LEFT:
            return tryToAddFromLeft(widget);
        case Position::TOP_RIGHT:
        case Position::CENTER_RIGHT:
        case Position::BOTTOM_RIGHT:
            return tryToAddFromRight(widget);
        case Position::TOP_CENTER:
        case Position::BOTTOM_CENTER:
            return tryToAddToCenter(*this, widget);
    }
    return false;
}

bool LinearLayout::tryToAddFromLeft(Widget* widget) {
    if (tryAt(*this, widget, mMargin.x)) {
        mWidgets.push_front(widget);
        return true;
    }
    for (auto it = mWidgets.begin(); it != mWidgets.end(); ++it) {
        const glm::vec4& neighbour = (*it)->mRect;
        if (tryAt(*this, widget, neighbour.x + neighbour.z + mSpacing.x)) {
            mWidgets.insert(it, widget);
            return true;
        }
    }
    return false;
}

bool LinearLayout::tryToAddFromRight(Widget* widget) {
    const float width = widget->mRect.z;
    if (tryAt(*this, widget, 1.0F - width - mMargin.x)) {
        mWidgets.push_back(widget);
        return true;
    }
    for (auto it = mWidgets.rbegin(); it != mWidgets.rend(); ++it) {
        if (tryAt(*this, widget, (*it)->mRect.x - width - mSpacing.x)) {
            mWidgets.insert(it.base(), widget);
            return true;
        }
    }
    return false;
}

bool addToLayout(Widget* widget, std::vector<LinearLayout>& rows, glm::vec2& margin, glm::vec2& spacing) {
    for (LinearLayout& row : rows) {
        if (row.tryToAdd(widget)) {
            return true;
        }
    }
    LinearLayout& row = rows.emplace_back();
    row.mMargin = margin;
    row.mSpacing = spacing;
    return row.tryToAdd(widget);
}

LayoutManager* LayoutManager::getInstance() {
    // Never destroyed: a thread may draw a frame while another one ends the process.
    static auto* const instance = new LayoutManager;
    return instance;
}

void LayoutManager::init(const std::vector<RenderArea>& landscape, const std::vector<RenderArea>& portrait) {
    mIsPortrait = true;
    mLandscapeAreas = landscape;
    mPortraitAreas = portrait;
    normalise(mLandscapeAreas, SCREEN_WIDTH, SCREEN_HEIGHT);
    normalise(mPortraitAreas, SCREEN_HEIGHT, SCREEN_WIDTH);
    for (std::uint32_t i = 0; i < WIDGET_COUNT; ++i) {
        mWidgets.push_back(new Widget{static_cast<WidgetType>(i), outlineOf(i)});
    }
}

bool LayoutManager::updateConfig() {
    if (!WidgetsSettings::load()) {
        return false;
    }
    const auto& settings = WidgetsSettings::getWidgets();
    const auto takeOver = [this](WidgetType type, const SysProp<Position>& position, bool enabled) {
        Widget* widget = getWidget(type);
        widget->mPosition = static_cast<std::int32_t>(position.getValue());
        widget->mEnabled = enabled;
    };
    takeOver(WidgetType::FPS, settings.mFps.mPosition, settings.mFps.enabled());
    takeOver(WidgetType::CPU_GPU, settings.mCpuGpu.mPosition, settings.mCpuGpu.enabled());
    takeOver(WidgetType::GPU_ACTIVITY, settings.mGpuActivity.mPosition, settings.mGpuActivity.enabled());
    takeOver(WidgetType::GPU_ACTIVITY_THUMBNAIL, settings.mGpuActivity.mThumbnailPosition,
             settings.mGpuActivity.thumbnailEnabled());
    takeOver(WidgetType::MEMORY, settings.mMemory.mPosition, settings.mMemory.enabled());
    return true;
}

void LayoutManager::updateWidgetsLayouts(bool portrait) {
    mIsPortrait = portrait;
    for (Widget* widget : mWidgets) {
        const RenderArea outline = getRenderArea(widget->mRenderArea);
        widget->mRect = {outline.x, outline.y, outline.width, outline.height};
    }

    const RenderArea marginArea = getRenderArea(RenderAreaType::MARGIN);
    const RenderArea spacingArea = getRenderArea(RenderAreaType::SPACING);
    glm::vec2 margin(marginArea.width, marginArea.height);
    glm::vec2 spacing(spacingArea.width, spacingArea.height);

    Rows rows;
    rows.middle.mMargin = margin;
    rows.middle.mSpacing = spacing;
    for (Widget* widget : mWidgets) {
        const bool isAnchored = static_cast<std::uint32_t>(widget->mPosition) <= LAST_POSITION;
        if (widget->mEnabled && isAnchored) {
            placeInRows(widget, rows, margin, spacing);
        }
    }

    float line = margin.y;
    for (const LinearLayout& row : rows.top) {
        line = line + placeOnLine(row, line) + spacing.y;
    }
    line = 1.0F - margin.y;
    for (const LinearLayout& row : rows.bottom) {
        line -= placeOnLine(row, line) + spacing.y;
    }
    placeOnLine(rows.middle, 0.5F);
}

void LayoutManager::updateDrawerLayout(drawer::Drawer* drawer) {
    const RenderArea area = getRenderArea(drawer->mRenderArea);
    drawer->mSize = {area.width, area.height};
    drawer->mPosition = {area.x, area.y};
    if (drawer->mWidget != nullptr) {
        drawer->mPosition += glm::vec2(drawer->mWidget->mRect);
    }
}

Widget* LayoutManager::getWidget(WidgetType type) const {
    return mWidgets[static_cast<std::size_t>(type)];
}

RenderArea LayoutManager::getRenderArea(RenderAreaType type) const {
    const std::vector<RenderArea>& areas = mIsPortrait ? mPortraitAreas : mLandscapeAreas;
    return areas[static_cast<std::size_t>(type)];
}

}  // namespace gui
