#include "gui/LayoutDef.h"

#include "gui/LayoutManager.h"

#include <iterator>

namespace gui {

// Constants, so that they have their values before any initialiser runs.
const float SCREEN_WIDTH = 740.0F;
const float SCREEN_HEIGHT = 360.0F;

// Never destroyed: a frame may still use it while another thread ends the process.
std::vector<glm::vec4>& gColor = *new std::vector<glm::vec4>{
    {0.0F, 0.0F, 0.0F, 0.5F},   //
    {0.0F, 0.52F, 1.0F, 0.5F},  //
    {0.0F, 0.52F, 1.0F, 1.0F},  //
    {0.0F, 0.4F, 0.0F, 0.7F},   //
    {0.0F, 0.7F, 0.0F, 1.0F},   //
    {1.0F, 0.45F, 0.0F, 0.5F},  //
    {1.0F, 0.45F, 0.0F, 1.0F},  //
    {1.0F, 0.0F, 0.0F, 1.0F},   //
    {1.0F, 1.0F, 1.0F, 0.2F},   //
    {1.0F, 1.0F, 1.0F, 1.0F},   //
    {1.0F, 1.0F, 0.0F, 1.0F},   //
    {0.0F, 0.0F, 0.0F, 0.0F},
};

namespace {

constexpr std::size_t AREA_COUNT = 47;

// In RenderAreaType order, canvas units.
constexpr RenderArea LANDSCAPE_AREAS[] = {
    {6, 44, 162, 10},  // CPU_GPU_FOOTER
    {0, 0, 171, 17},   // CPU_GPU_STRIP
    {6, 0, 24, 17},    // CPU_GPU_LABEL
    {35, 0, 22, 17},   // CPU_GPU_NAME_1
    {79, 0, 26, 17},   // CPU_GPU_NAME_2
    {127, 0, 21, 17},  // CPU_GPU_NAME_3
    {57, 0, 22, 17},   // CPU_GPU_VALUE_1
    {105, 0, 22, 17},  // CPU_GPU_VALUE_2
    {148, 0, 22, 17},  // CPU_GPU_VALUE_3
    {0, 17, 171, 38},  // CPU_GPU_GRAPH
    {0, 0, 171, 55},   // CPU_GPU_WHOLE
    {0, 0, 316, 17},   // MEMORY_STRIP
    {6, 34, 41, 17},   // MEMORY_LABEL
    {6, 0, 24, 17},    // MEMORY_NAME_1
    {64, 0, 24, 17},   // MEMORY_NAME_2
    {122, 0, 24, 17},  // MEMORY_NAME_3
    {180, 0, 24, 17},  // MEMORY_NAME_4
    {238, 0, 42, 17},  // MEMORY_NAME_5
    {30, 0, 34, 17},   // MEMORY_VALUE_1
    {88, 0, 34, 17},   // MEMORY_VALUE_2
    {146, 0, 34, 17},  // MEMORY_VALUE_3
    {204, 0, 34, 17},  // MEMORY_VALUE_4
    {280, 0, 34, 17},  // MEMORY_VALUE_5
    {0, 17, 316, 38},  // MEMORY_GRAPH
    {0, 0, 316, 55},   // MEMORY_WHOLE
    {0, 0, 171, 17},   // FPS_STRIP
    {6, 1, 54, 15},    // FPS_TEXT_1
    {63, 1, 54, 15},   // FPS_TEXT_2
    {118, 1, 47, 15},  // FPS_TEXT_3
    {88, 26, 77, 15},  // FPS_NOTE
    {0, 17, 171, 38},  // FPS_GRAPH
    {0, 0, 171, 55},   // FPS_WHOLE
    {0, 0, 111, 55},   // GPU_ACTIVITY_THUMBNAIL_WHOLE
    {0, 0, 40, 24},    // GPU_ACTIVITY_THUMBNAIL_LABEL
    {0, 0, 668, 12},   // GPU_ACTIVITY_LINE_1
    {0, 14, 668, 12},  // GPU_ACTIVITY_LINE_2
    {0, 28, 668, 12},  // GPU_ACTIVITY_LINE_3
    {0, 42, 668, 20},  // GPU_ACTIVITY_BAND
    {0, 42, 668, 20},  // GPU_ACTIVITY_BAND_OVERLAY
    {0, 0, 668, 64},   // GPU_ACTIVITY_WHOLE
    {0, 0, 171, 55},   // OUTLINE_FPS
    {0, 0, 171, 55},   // OUTLINE_CPU_GPU
    {0, 0, 668, 64},   // OUTLINE_GPU_ACTIVITY
    {0, 0, 111, 55},   // OUTLINE_GPU_ACTIVITY_THUMBNAIL
    {0, 0, 316, 55},   // OUTLINE_MEMORY
    {0, 0, 36, 14},    // MARGIN
    {0, 0, 5, 5},      // SPACING
};

constexpr RenderArea PORTRAIT_AREAS[] = {
    {6, 44, 162, 10},  // CPU_GPU_FOOTER
    {0, 0, 171, 17},   // CPU_GPU_STRIP
    {6, 0, 24, 17},    // CPU_GPU_LABEL
    {35, 0, 22, 17},   // CPU_GPU_NAME_1
    {79, 0, 26, 17},   // CPU_GPU_NAME_2
    {127, 0, 21, 17},  // CPU_GPU_NAME_3
    {57, 0, 22, 17},   // CPU_GPU_VALUE_1
    {105, 0, 22, 17},  // CPU_GPU_VALUE_2
    {148, 0, 22, 17},  // CPU_GPU_VALUE_3
    {0, 17, 171, 38},  // CPU_GPU_GRAPH
    {0, 0, 171, 55},   // CPU_GPU_WHOLE
    {0, 0, 350, 17},   // MEMORY_STRIP
    {6, 34, 41, 17},   // MEMORY_LABEL
    {6, 0, 25, 17},    // MEMORY_NAME_1
    {71, 0, 25, 17},   // MEMORY_NAME_2
    {136, 0, 25, 17},  // MEMORY_NAME_3
    {201, 0, 25, 17},  // MEMORY_NAME_4
    {266, 0, 45, 17},  // MEMORY_NAME_5
    {31, 0, 40, 17},   // MEMORY_VALUE_1
    {96, 0, 40, 17},   // MEMORY_VALUE_2
    {161, 0, 40, 17},  // MEMORY_VALUE_3
    {226, 0, 40, 17},  // MEMORY_VALUE_4
    {311, 0, 40, 17},  // MEMORY_VALUE_5
    {0, 17, 350, 38},  // MEMORY_GRAPH
    {0, 0, 350, 55},   // MEMORY_WHOLE
    {0, 0, 171, 17},   // FPS_STRIP
    {6, 1, 54, 15},    // FPS_TEXT_1
    {63, 1, 54, 15},   // FPS_TEXT_2
    {118, 1, 47, 15},  // FPS_TEXT_3
    {88, 26, 77, 15},  // FPS_NOTE
    {0, 17, 171, 38},  // FPS_GRAPH
    {0, 0, 171, 55},   // FPS_WHOLE
    {0, 0, 54, 111},   // GPU_ACTIVITY_THUMBNAIL_WHOLE
    {4, 0, 40, 24},    // GPU_ACTIVITY_THUMBNAIL_LABEL
    {0, 0, 350, 12},   // GPU_ACTIVITY_LINE_1
    {0, 14, 350, 12},  // GPU_ACTIVITY_LINE_2
    {0, 28, 350, 12},  // GPU_ACTIVITY_LINE_3
    {0, 42, 350, 20},  // GPU_ACTIVITY_BAND
    {0, 42, 350, 20},  // GPU_ACTIVITY_BAND_OVERLAY
    {0, 0, 350, 64},   // GPU_ACTIVITY_WHOLE
    {0, 0, 171, 55},   // OUTLINE_FPS
    {0, 0, 171, 55},   // OUTLINE_CPU_GPU
    {0, 0, 350, 64},   // OUTLINE_GPU_ACTIVITY
    {0, 0, 54, 111},   // OUTLINE_GPU_ACTIVITY_THUMBNAIL
    {0, 0, 350, 55},   // OUTLINE_MEMORY
    {0, 0, 5, 34},     // MARGIN
    {0, 0, 5, 5},      // SPACING
};

static_assert(std::size(LANDSCAPE_AREAS) == AREA_COUNT && std::size(PORTRAIT_AREAS) == AREA_COUNT);

/// Defines the layout when the library is loaded, so that every layer finds the areas and widgets in place.
[[maybe_unused]] const bool gLayoutDefined = [] {
    const std::vector<RenderArea> landscape(std::begin(LANDSCAPE_AREAS), std::end(LANDSCAPE_AREAS));
    const std::vector<RenderArea> portrait(std::begin(PORTRAIT_AREAS), std::end(PORTRAIT_AREAS));
    LayoutManager::getInstance()->init(landscape, portrait);
    return true;
}();

}  // namespace
}  // namespace gui
