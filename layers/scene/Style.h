#pragma once

#include <glm/vec4.hpp>

namespace drawer {
class TextDrawer;
}

namespace scene {

/// The looks that the settings leave open, in one place.

/// Lines of the grids.
glm::vec4 gridColor();

/// Names of figures, notes and captions.
glm::vec4 plainTextColor();

/// Blocks of render passes.
glm::vec4 renderPassColor();

/// Background of the widgets, from the settings.
glm::vec4 backgroundColor();

/// No background of its own.
glm::vec4 noColor();

/// Heights of a line of text in canvas units. Cells are higher: an equal height for all texts of a kind
/// keeps figures from changing their size as they grow.
constexpr float FIGURE_TEXT_HEIGHT = 12.0F;
constexpr float NOTE_TEXT_HEIGHT = 10.0F;

/// Limits the text's height; a text whose cell is too narrow for that is squeezed.
void setTextHeight(drawer::TextDrawer& text, float canvasUnits, float pixelsPerUnit);

}  // namespace scene
