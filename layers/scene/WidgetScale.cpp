#include "scene/WidgetScale.h"

#include "gui/LayoutManager.h"
#include "scene/Canvas.h"
#include "scene/ScaleText.h"
#include "scene/Style.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <glm/common.hpp>
#include <vector>

namespace scene {

namespace {

using Area = gui::RenderAreaType;
using Areas = std::vector<gui::RenderArea>;

/// The areas of a widget.
struct Group {
    Area first;
    Area last;
    Area outline;
};

constexpr Group GROUPS[] = {
    {Area::FPS_STRIP, Area::FPS_WHOLE, Area::OUTLINE_FPS},
    {Area::CPU_GPU_FOOTER, Area::CPU_GPU_WHOLE, Area::OUTLINE_CPU_GPU},
    {Area::GPU_ACTIVITY_LINE_1, Area::GPU_ACTIVITY_WHOLE, Area::OUTLINE_GPU_ACTIVITY},
    {Area::GPU_ACTIVITY_THUMBNAIL_WHOLE, Area::GPU_ACTIVITY_THUMBNAIL_LABEL,
     Area::OUTLINE_GPU_ACTIVITY_THUMBNAIL},
    {Area::MEMORY_STRIP, Area::MEMORY_WHOLE, Area::OUTLINE_MEMORY},
};

/// Surfaces with smaller units, in pixels, have no room for the overlay anyway.
constexpr float SMALLEST_UNIT = 0.1F;

/// The scale of one side, which has a margin at both ends.
float fit(float scale, float length, float margin) {
    return scale <= 1.0F ? scale : std::clamp((1.0F - 2.0F * margin) / length, 1.0F, scale);
}

Areas scaled(Areas areas, const glm::vec2& scale) {
    const auto at = [&areas](Area type) -> gui::RenderArea& { return areas[static_cast<std::size_t>(type)]; };
    const gui::RenderArea margin = at(Area::MARGIN);
    for (const Group& group : GROUPS) {
        const gui::RenderArea outline = at(group.outline);
        const float x = fit(scale.x, outline.width, margin.width);
        const float y = fit(scale.y, outline.height, margin.height);
        const auto grow = [&](gui::RenderArea& area) {
            area = {area.x * x, area.y * y, area.width * x, area.height * y};
        };
        std::for_each(&at(group.first), &at(group.last) + 1, grow);
        grow(at(group.outline));
    }
    return areas;
}

/// The areas of a widget of figures.
struct FigureAreas {
    gui::WidgetType type;
    Area strip;
    Area graph;
    Area whole;
    Area outline;
    Area note;       // over the graph
    bool isAtRight;  // the note
};

constexpr FigureAreas FIGURE_AREAS[] = {
    {gui::WidgetType::FPS, Area::FPS_STRIP, Area::FPS_GRAPH, Area::FPS_WHOLE, Area::OUTLINE_FPS,
     Area::FPS_NOTE, true},
    {gui::WidgetType::CPU_GPU, Area::CPU_GPU_STRIP, Area::CPU_GPU_GRAPH, Area::CPU_GPU_WHOLE,
     Area::OUTLINE_CPU_GPU, Area::CPU_GPU_FOOTER, false},
    {gui::WidgetType::MEMORY, Area::MEMORY_STRIP, Area::MEMORY_GRAPH, Area::MEMORY_WHOLE,
     Area::OUTLINE_MEMORY, Area::MEMORY_LABEL, false},
};

void shape(Areas& areas, const WidgetShape& wanted) {
    const auto at = [&areas](Area type) -> gui::RenderArea& { return areas[static_cast<std::size_t>(type)]; };
    for (const FigureAreas& widget : FIGURE_AREAS) {
        if (widget.type != wanted.type) {
            continue;
        }
        gui::RenderArea& outline = at(widget.outline);
        const float margin = at(Area::MARGIN).width;
        float width = outline.width;
        if (wanted.width != 0.0F) {
            const float end = std::ceil((margin + wanted.width) / wanted.pixel) * wanted.pixel;
            width = std::min(end - margin, 1.0F - 2.0F * margin);
        }
        const float more = width - outline.width;
        for (const Area area : {widget.strip, widget.graph, widget.whole, widget.outline}) {
            at(area).width = width;
        }
        gui::RenderArea& note = at(widget.note);
        if (widget.isAtRight) {
            const float end = note.x + note.width + more;
            note.x = std::max(0.0F, note.x + more);
            note.width = end - note.x;
        } else {
            note.width = std::min(note.width, width - note.x);
        }
        if (wanted.isLine && wanted.width != 0.0F) {
            at(Area::SPACING).width = 0.0F;  // such widgets make one line together
        }
        if (wanted.isLine) {
            outline.height = at(widget.whole).height = at(widget.strip).height;
        }
    }
}

}  // namespace

const SysProp<std::string>& scaleSetting() {
    static const auto& setting = SysPropWatcher::createSysProp<std::string>("debug.kordanix.scale", "1");
    return setting;
}

glm::vec2 widgetScale(const glm::uvec2& surface) {
    const float wanted = parseScale(scaleSetting().getValue()).value_or(1.0F);
    const glm::vec2 legible =
        LINE_PIXELS / FIGURE_TEXT_HEIGHT / glm::max(Canvas::unitOf(surface), glm::vec2(SMALLEST_UNIT));
    return glm::max(glm::vec2(wanted), legible);
}

void arrangeAreas(const glm::vec2& scale, const std::vector<WidgetShape>& shapes) {
    gui::LayoutManager& manager = *gui::LayoutManager::getInstance();
    // Never destroyed: a thread may draw a frame while another one ends the process.
    static const auto* const landscape = new Areas(manager.mLandscapeAreas);
    static const auto* const portrait = new Areas(manager.mPortraitAreas);
    static glm::vec2 appliedScale(1.0F);
    static auto& appliedShapes = *new std::vector<WidgetShape>;
    if (scale == appliedScale && shapes == appliedShapes) {
        return;
    }
    manager.mLandscapeAreas = scaled(*landscape, scale);
    manager.mPortraitAreas = scaled(*portrait, scale);
    for (const WidgetShape& each : shapes) {
        shape(manager.mLandscapeAreas, each);
        shape(manager.mPortraitAreas, each);
    }
    appliedScale = scale;
    appliedShapes = shapes;
}

}  // namespace scene
