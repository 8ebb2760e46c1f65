#pragma once

#include "drawers/Drawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "utils/Export.h"

#include <cstdint>
#include <glm/vec4.hpp>
#include <memory>
#include <string>
#include <vector>

namespace drawer {

/// The last lines of text added, with the oldest at the top, over a background. All lines have the same
/// height; while the block is not full, its lower part is empty.
class KORDANIX_EXPORT TextblockDrawer : public Drawer {
public:
    /// Calls the factory once for each of `lineCount` lines, which may be 0. The factory should not return
    /// null; a line without a drawer is not drawn. `textSizeHint` is the largest height of the text in
    /// surface pixels, 0 for no limit.
    TextblockDrawer(std::unique_ptr<TextDrawer> (*createTextDrawer)(), std::unique_ptr<RectDrawer> background,
                    unsigned int lineCount, unsigned int textSizeHint);
    ~TextblockDrawer() override;

    /// Draws the background, then the text.
    void draw() override;

    /// Adds a line; in a full block it replaces the oldest one.
    void addText(const std::string& text);

    // These apply to all lines, from the next draw on.

    void setTextColor(const glm::vec4& color);
    void setTextEllipsize(gui::TextEllipsize ellipsize);
    void setTextGravity(gui::TextGravity gravity);
    void setBackgroundColor(const glm::vec4& color);

    void drawBackground();
    void drawText();

    std::vector<std::unique_ptr<TextDrawer>> mLineDrawers;  ///< from top to bottom
    std::unique_ptr<RectDrawer> mBackground;
    std::vector<std::string> mLines;  ///< a ring, once it holds mMaxLines lines
    std::uint32_t mMaxLines;
    std::uint32_t mTextSizeHint;

    /// The index of the ring's oldest line, which the next one overwrites; mMaxLines means 0.
    std::uint32_t mOldestLine = 0;

    glm::vec4 mTextColor{0.0F};
    gui::TextEllipsize mTextEllipsize = gui::TextEllipsize::NONE;
    gui::TextGravity mTextGravity = gui::TextGravity::LEFT;
};

}  // namespace drawer
