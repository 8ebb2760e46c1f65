#include "opengl/context/WidgetPixels.h"

#include "gui/LayoutManager.h"
#include "scene/WidgetScale.h"

#include <algorithm>
#include <cstddef>
#include <glm/vector_relational.hpp>

std::vector<PixelShare> compareWidgets(const software::Image& bare, const software::Image& overlaid) {
    gui::LayoutManager& layout = *gui::LayoutManager::getInstance();
    layout.updateConfig();
    scene::arrangeAreas(scene::widgetScale({bare.mWidth, bare.mHeight}), {});
    layout.updateWidgetsLayouts(bare.mHeight > bare.mWidth);
    std::vector<glm::vec4> areas;
    for (const gui::Widget* widget : layout.mWidgets) {
        if (widget->mEnabled) {
            areas.push_back(widget->mRect);
        }
    }
    std::vector<PixelShare> shares(areas.size() + 1);
    for (std::size_t i = 0; i < bare.mPixels.size(); ++i) {
        const glm::vec2 size(bare.mWidth, bare.mHeight);
        const glm::vec2 pixel(i % bare.mWidth, i / bare.mWidth);
        const auto area = std::find_if(areas.begin(), areas.end(), [&](const glm::vec4& each) {
            const glm::vec2 start(each.x, each.y);
            const glm::vec2 end = start + glm::vec2(each.z, each.w);
            return glm::all(glm::lessThan(start * size, pixel + 1.0F)) &&
                   glm::all(glm::lessThan(pixel, end * size));
        });
        PixelShare& share = shares[static_cast<std::size_t>(area - areas.begin())];
        ++share.all;
        share.differing += bare.mPixels[i] == overlaid.mPixels[i] ? 0 : 1;
    }
    return shares;
}
