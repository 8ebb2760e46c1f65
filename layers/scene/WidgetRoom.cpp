#include "scene/WidgetRoom.h"

#include "gui/LayoutManager.h"

#include <algorithm>
#include <vector>

namespace scene {

namespace {

using gui::WidgetType;

constexpr WidgetType BY_IMPORTANCE[] = {WidgetType::FPS, WidgetType::CPU_GPU, WidgetType::GPU_ACTIVITY,
                                        WidgetType::MEMORY, WidgetType::GPU_ACTIVITY_THUMBNAIL};

/// In fractions of the surface, for rounding.
constexpr float TOLERANCE = 1e-3F;

bool isOnSurface(const glm::vec4& rect) {
    return rect.x >= -TOLERANCE && rect.y >= -TOLERANCE && rect.x + rect.z <= 1.0F + TOLERANCE &&
           rect.y + rect.w <= 1.0F + TOLERANCE;
}

bool areApart(const glm::vec4& a, const glm::vec4& b) {
    return a.x + a.z <= b.x + TOLERANCE || b.x + b.z <= a.x + TOLERANCE || a.y + a.w <= b.y + TOLERANCE ||
           b.y + b.w <= a.y + TOLERANCE;
}

}  // namespace

WidgetSet widgetsWithoutRoom() {
    WidgetSet without;
    std::vector<glm::vec4> taken;
    for (const WidgetType type : BY_IMPORTANCE) {
        const gui::Widget& widget = *gui::LayoutManager::getInstance()->getWidget(type);
        if (!widget.mEnabled) {
            continue;
        }
        const bool hasRoom =
            isOnSurface(widget.mRect) && std::all_of(taken.begin(), taken.end(), [&](const glm::vec4& other) {
                return areApart(widget.mRect, other);
            });
        if (hasRoom) {
            taken.push_back(widget.mRect);
        }
        without.set(static_cast<std::size_t>(type), !hasRoom);
    }
    return without;
}

}  // namespace scene
