#include "scene/Style.h"

#include "drawers/TextDrawer.h"
#include "gui/GlyphAtlas.h"
#include "gui/LayoutDef.h"
#include "gui/WidgetsSettings.h"
#include "raster/Luminance.h"
#include "scene/Canvas.h"

#include <algorithm>
#include <cmath>

namespace scene {

namespace {

/// Whether the user made the ground so light that white would not show. What lies below it is not known; it
/// counts as black.
bool isGroundLight() {
    const glm::vec4 ground = backgroundColor();
    return !raster::isDark(ground * ground.a);
}

/// As it is, or as dark as it is light.
glm::vec4 onGround(const glm::vec4& light) {
    return isGroundLight() ? glm::vec4(1.0F - glm::vec3(light), light.a) : light;
}

}  // namespace

glm::vec4 gridColor() {
    return onGround(gui::gColor[8]);
}

glm::vec4 plainTextColor() {
    return onGround(gui::gColor[9]);
}

glm::vec4 renderPassColor() {
    return gui::gColor[3];
}

glm::vec4 backgroundColor() {
    return gui::WidgetsSettings::getWidgets().bgColor();
}

glm::vec4 backdropColor() {
    // Denser than the palette's half-transparent black, because bright lines run behind small texts.
    constexpr float OPACITY = 0.75F;
    const float shade = isGroundLight() ? 1.0F : 0.0F;
    return {shade, shade, shade, OPACITY};
}

glm::vec4 noColor() {
    return gui::gColor[11];
}

void setTextHeight(drawer::TextDrawer& text, float canvasUnits, const Canvas& canvas) {
    // 0 would mean no limit.
    text.setTextSizeHint(static_cast<unsigned int>(std::lround(textPixels(canvasUnits, canvas))));
}

float textPixels(float canvasUnits, const Canvas& canvas) {
    return std::max(canvasUnits * canvas.pixelsPerUnit(), LINE_PIXELS);
}

float textHeight(float canvasUnits, const Canvas& canvas) {
    return textPixels(canvasUnits, canvas) / canvas.pixels.y;
}

bool isLegible(const drawer::TextDrawer& text, const Canvas& canvas) {
    constexpr float ROUNDING = 0.25F;
    return measureText(text, canvas).y * canvas.pixels.y >= LINE_PIXELS - ROUNDING;
}

float lineWidth(const std::string& text) {
    float width = 0.0F;
    for (const char symbol : text) {
        width += gui::GlyphAtlas::getGlyphAtlas().getGlyphWidth(symbol);
    }
    return width;
}

glm::vec2 measureText(const drawer::TextDrawer& text, const Canvas& canvas) {
    const float width = lineWidth(text.mText);
    const glm::vec2 box = text.mSize * canvas.pixels;
    float height = text.mTextSizeHint == 0 ? box.y : std::min(box.y, static_cast<float>(text.mTextSizeHint));
    if (width * height > 2.0F * box.x) {
        height = 2.0F * box.x / width;  // squeezed
    }
    return glm::vec2(width * height * 0.5F, height) / canvas.pixels;
}

}  // namespace scene
