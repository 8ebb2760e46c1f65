#pragma once

#include "drawers/Drawer.h"
#include "gui/GlyphAtlas.h"
#include "utils/Export.h"

#include <cstdint>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>
#include <string>

namespace gui {

/// How a line is aligned in its box. Any other value counts as LEFT.
enum class TextGravity : std::int32_t {
    LEFT = 0,
    RIGHT = 1,
    CENTER = 2,
};

/// Where "..." shortens a line that is too wide for its box. With any other value the text stays as it is.
enum class TextEllipsize : std::int32_t {
    NONE = 0,  ///< the line is scaled down instead
    START = 1,
    END = 2,
    MIDDLE = 3,
};

}  // namespace gui

namespace drawer {

/// One line of text, as high as its box and in the glyphs' own proportions on any surface. Widths are in line
/// units, in which a line is 2 high. Bytes without a glyph are skipped and take no room; each look-up of one
/// is logged. Keeps nothing between two draws, and allocates only for a shortened line.
class KORDANIX_EXPORT TextDrawer : public Drawer {
public:
    TextDrawer();
    ~TextDrawer() override;

    /// Fits the line into the box, then calls drawGlyph() for every glyph. Calls the layer's operations in
    /// the order getScreenHeight, getTransform, getAspectRatio, drawGlyph. In a box without area the glyphs
    /// get matrices that shrink them to nothing. When the layer's transform is not finite, it draws no glyph.
    void draw() override;

    /// Draws the glyph's quad with this matrix, tinted with the colour.
    virtual void drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                           char symbol) = 0;

    /// Returns the matrix that maps local coordinates of a box (size and position in canvas fractions),
    /// shifted by the translation (clip-space units), onto the surface.
    virtual glm::mat4 getTransform(const glm::vec2& size, const glm::vec2& position,
                                   const glm::vec3& translation) = 0;

    /// The surface's height divided by its width, in pixels.
    virtual float getAspectRatio() = 0;

    /// The surface's height in pixels.
    virtual float getScreenHeight() = 0;

    // These take effect at the next draw.

    void setText(const std::string& text);
    void setTextColor(const glm::vec4& color);

    /// Sets the largest height of the text in surface pixels; 0 for no limit. A higher box shrinks around its
    /// middle.
    void setTextSizeHint(unsigned int hint);
    void setTextEllipsize(gui::TextEllipsize ellipsize);
    void setTextGravity(gui::TextGravity gravity);

    /// Shortens the text with "..." to less than `maxWidth` (only the dots if they alone are wider), as
    /// mTextEllipsize says. START always drops the first character; MIDDLE keeps as many characters at the
    /// end as at the beginning. Both do so even when the whole text would have fitted.
    std::string getTruncatedString(float maxWidth);

    glm::vec4 mTextColor{0.0F};
    std::string mText = "N/A";
    std::uint32_t mTextSizeHint = 0;
    gui::TextEllipsize mTextEllipsize = gui::TextEllipsize::NONE;
    gui::TextGravity mTextGravity = gui::TextGravity::LEFT;

    // The box of the last draw, in canvas fractions: the drawer's rectangle after the size hint.
    glm::vec2 mTextSize{0.0F};
    glm::vec2 mTextPosition{0.0F};
};

}  // namespace drawer
