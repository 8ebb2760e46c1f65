#include "scene/WidgetScale.h"

#include "gui/LayoutManager.h"
#include "scene/Canvas.h"
#include "scene/ScaleText.h"
#include "scene/Style.h"

#include <glm/common.hpp>

#include <algorithm>
#include <cstddef>
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

}  // namespace

const SysProp<std::string>& scaleSetting() {
    static const auto& setting = SysPropWatcher::createSysProp<std::string>("debug.kordanix.scale", "1");
    return setting;
}

glm::vec2 scaleAreas(const glm::uvec2& surface) {
    gui::LayoutManager& manager = *gui::LayoutManager::getInstance();
    // Never destroyed: a thread may draw a frame while another one ends the process.
    static const auto* const landscape = new Areas(manager.mLandscapeAreas);
    static const auto* const portrait = new Areas(manager.mPortraitAreas);
    static glm::vec2 applied(1.0F);
    const float wanted = parseScale(scaleSetting().getValue()).value_or(1.0F);
    const glm::vec2 legible =
        LINE_PIXELS / FIGURE_TEXT_HEIGHT / glm::max(Canvas::unitOf(surface), glm::vec2(SMALLEST_UNIT));
    const glm::vec2 scale = glm::max(glm::vec2(wanted), legible);
    if (scale != applied) {
        manager.mLandscapeAreas = scaled(*landscape, scale);
        manager.mPortraitAreas = scaled(*portrait, scale);
        applied = scale;
    }
    return scale;
}

}  // namespace scene
