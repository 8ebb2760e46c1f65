#pragma once

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>
#include <string>

namespace drawer {
class TextDrawer;
}

namespace scene {

struct Canvas;

/// The colours and sizes that the settings do not determine.

/// Lines of the grids; dark on a light ground.
glm::vec4 gridColor();

/// Names of figures, notes and captions; dark on a light ground.
glm::vec4 plainTextColor();

/// Blocks of render passes.
glm::vec4 renderPassColor();

/// Background of the widgets, from the settings.
glm::vec4 backgroundColor();

/// Behind texts that lie over graphs; light with a light ground.
glm::vec4 backdropColor();

/// No background of its own.
glm::vec4 noColor();

/// The heights of a line of text in canvas units. Cells are higher; with one height for all texts of a kind,
/// figures do not change their size as they grow.
constexpr float FIGURE_TEXT_HEIGHT = 12.0F;
constexpr float NOTE_TEXT_HEIGHT = 10.0F;

/// A line of text is never lower than this on the surface: its capitals are 8 pixels high then.
constexpr float LINE_PIXELS = 14.0F;

/// The height of such a line in pixels.
float textPixels(float canvasUnits, const Canvas& canvas);

/// The same in canvas fractions.
float textHeight(float canvasUnits, const Canvas& canvas);

/// Whether the text is in its cell without being squeezed below LINE_PIXELS.
bool isLegible(const drawer::TextDrawer& text, const Canvas& canvas);

/// Limits the text's height; a text that is too wide for its cell is squeezed.
void setTextHeight(drawer::TextDrawer& text, float canvasUnits, const Canvas& canvas);

/// Width of the text in units of a line, which is 2 high.
float lineWidth(const std::string& text);

/// Returns the width and height, in canvas fractions, of the text as the drawer will draw it.
glm::vec2 measureText(const drawer::TextDrawer& text, const Canvas& canvas);

}  // namespace scene
