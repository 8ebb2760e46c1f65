#include "doubles/FakeLog.h"
#include "doubles/RecordingPrimitives.h"
#include "drawers/TextDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/GlyphAtlas.h"

#include <glm/vec4.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using doubles::RecordingText;
using gui::TextEllipsize;
using gui::TextGravity;

float widthOf(const std::string& text) {
    float width = 0.0F;
    for (const char symbol : text) {
        width += gui::GlyphAtlas::getGlyphAtlas().getGlyphWidth(symbol);
    }
    return width;
}

/// Where the pen stands (left) and how wide and high a line is on the surface, in canvas fractions, told
/// from a glyph's transform by undoing the glyph's own placement.
struct Placed {
    float pen;
    float top;
    float unitWidth;   ///< of one line unit
    float lineHeight;  ///< of the 2 line units of a line
};

Placed placementOf(const RecordingText::DrawnGlyph& drawn) {
    const gui::Glyph* const glyph = gui::GlyphAtlas::getGlyphAtlas()[drawn.symbol];
    const glm::mat4 line = drawn.transform * glm::inverse(glyph->mTransform);
    const glm::vec4 start = line * glm::vec4(-1.0F, -1.0F, 0.0F, 1.0F);
    const glm::vec4 end = line * glm::vec4(0.0F, 1.0F, 0.0F, 1.0F);
    return {start.x, start.y, end.x - start.x, end.y - start.y};
}

TEST(Text, FitsTheLineIntoItsBox) {
    const struct {
        std::string text;
        float widthInLines;  // of the box, in multiples of what the text needs at full height
        TextGravity gravity;
        float left;   // expected start, as a share of the free width
        float scale;  // expected line height, as a share of the box's
    } cases[] = {{"GPU 59.9", 2.0F, TextGravity::LEFT, 0.0F, 1.0F},
                 {"GPU 59.9", 2.0F, TextGravity::RIGHT, 1.0F, 1.0F},
                 {"GPU 59.9", 3.0F, TextGravity::CENTER, 0.5F, 1.0F},
                 {"Ag", 3.0F, static_cast<TextGravity>(9), 0.0F, 1.0F},
                 {"0000", 1.0001F, TextGravity::CENTER, 0.5F, 1.0F},
                 {"0000", 0.25F, TextGravity::RIGHT, 0.0F, 0.25F}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.widthInLines);
        RecordingText text;
        const float height = 0.1F;
        const float natural = widthOf(c.text) * 0.5F * height * text.getAspectRatio();
        text.mPosition = {0.2F, 0.3F};
        text.mSize = {natural * c.widthInLines, height};
        text.setText(c.text);
        text.setTextGravity(c.gravity);
        text.draw();
        ASSERT_EQ(text.mDrawnText, c.text);
        const Placed first = placementOf(text.mGlyphs[0]);
        const float drawnWidth = natural * c.scale;
        EXPECT_NEAR(first.lineHeight, height * c.scale, 1e-5F);
        EXPECT_NEAR(first.unitWidth * widthOf(c.text), drawnWidth, 1e-5F) << "proportions kept";
        EXPECT_NEAR(first.top, 0.3F + height * (1.0F - c.scale) * 0.5F, 1e-5F) << "centred when scaled down";
        float pen = 0.2F + (text.mSize.x - drawnWidth) * c.left;
        for (const RecordingText::DrawnGlyph& glyph : text.mGlyphs) {
            EXPECT_NEAR(placementOf(glyph).pen, pen, 1e-5F);
            pen += first.unitWidth * widthOf(std::string(1, glyph.symbol));
        }
    }
}

TEST(Text, IsShortenedOnlyWhenItDoesNotFit) {
    RecordingText text;
    text.mSize = {0.5F, 0.1F};
    text.draw();
    EXPECT_EQ(text.mDrawnText, "N/A");
    text.setText("Vertex shader");
    text.setTextEllipsize(TextEllipsize::END);
    text.setTextGravity(TextGravity::RIGHT);
    const float natural = widthOf("Vertex shader") * 0.05F * text.getAspectRatio();
    text.mSize = {natural * 1.0001F, 0.1F};
    text.draw();
    EXPECT_EQ(text.mDrawnText, "Vertex shader");
    text.mSize = {natural * 0.8F, 0.1F};
    text.draw();
    EXPECT_THAT(text.mDrawnText, testing::MatchesRegex("Vertex.*\\.\\.\\."));
    const Placed last = placementOf(text.mGlyphs.back());
    EXPECT_NEAR(last.lineHeight, 0.1F, 1e-5F) << "full height";
    EXPECT_NEAR(last.pen + last.unitWidth * widthOf("."), text.mSize.x, 1e-5F) << "ends at the right edge";
}

TEST(Text, TruncationKeepsLessThanTheWidth) {
    const float dots = widthOf("...");
    const float digit = widthOf("0");
    const float little = 0.001F;
    const std::tuple<TextEllipsize, std::string, float, std::string> cases[] = {
        {TextEllipsize::NONE, "0123456789", 0.0F, "0123456789"},
        {static_cast<TextEllipsize>(7), "0123456789", 0.0F, "0123456789"},
        {TextEllipsize::END, "0123456789", dots + 3 * digit + little, "012..."},
        {TextEllipsize::END, "0123456789", dots + 3 * digit - little, "01..."},
        {TextEllipsize::END, "01", 100.0F, "01..."},
        {TextEllipsize::START, "0123456789", dots + 3 * digit + little, "...789"},
        {TextEllipsize::START, "0123456789", 100.0F, "...123456789"},
        {TextEllipsize::START, "0", 100.0F, "..."},
        {TextEllipsize::MIDDLE, "0123456789", dots + 4 * digit + little, "01...89"},
        {TextEllipsize::MIDDLE, "0123456789", dots + 5 * digit + little, "01...89"},
        {TextEllipsize::MIDDLE, "0123456", 100.0F, "012...456"},
        {TextEllipsize::END, "0123", dots - little, "..."},
        {TextEllipsize::MIDDLE, "0123", dots - little, "..."},
        {TextEllipsize::MIDDLE, "", 100.0F, "..."},
    };
    for (const auto& [mode, whole, width, result] : cases) {
        RecordingText text;
        text.setText(whole);
        text.setTextEllipsize(mode);
        EXPECT_EQ(text.getTruncatedString(width), result) << static_cast<int>(mode) << whole << width;
    }
}

TEST(Text, SizeHintShrinksTheBoxAroundItsMiddle) {
    // The box is 40 pixels high on a surface of 400.
    const std::tuple<unsigned, float, float> cases[] = {
        {0, 0.5F, 0.1F}, {20, 0.525F, 0.05F}, {39, 0.50125F, 0.0975F}, {40, 0.5F, 0.1F}, {4000, 0.5F, 0.1F}};
    for (const auto& [hint, position, size] : cases) {
        RecordingText text;
        doubles::surface().y = 400.0F;
        text.mPosition = {0.0F, 0.5F};
        text.mSize = {1.0F, 0.1F};
        text.setTextSizeHint(hint);
        text.draw();
        EXPECT_NEAR(text.mTextPosition.y, position, 1e-5F) << hint;
        EXPECT_NEAR(text.mTextSize.y, size, 1e-5F) << hint;
        EXPECT_EQ(text.mSize.y, 0.1F);
    }
}

TEST(Text, SkipsAndReportsBytesWithoutGlyph) {
    RecordingText text;
    text.mSize = {0.9F, 0.1F};
    text.setText(
        "1\xc3"
        "2");
    doubles::takeLog();
    text.draw();
    EXPECT_EQ(text.mDrawnText, "12");
    EXPECT_NEAR(placementOf(text.mGlyphs[1]).pen - placementOf(text.mGlyphs[0]).pen,
                widthOf("1") * placementOf(text.mGlyphs[0]).unitWidth, 1e-5F)
        << "the pen does not move";
    EXPECT_THAT(doubles::takeLog().back().text,
                testing::ContainsRegex("TextDrawer.cpp:draw\\([0-9]+\\) No Glyph\\(0xc3\\) in font"));
}

TEST(Textblock, ShowsTheLastLinesOldestFirst) {
    drawer::TextblockDrawer block(doubles::createRecordingText, std::make_unique<doubles::RecordingRect>(), 3,
                                  35);
    block.mPosition = {0.1F, 0.2F};
    block.mSize = {0.5F, 0.3F};
    std::vector<std::string> expected = {"background"};
    for (const char* const line : {"", "a", "b", "c", "d", "e", "f", "g"}) {
        if (*line != '\0') {
            block.addText(line);
            expected.emplace_back(line);
        }
        if (expected.size() > 4) {
            expected.erase(expected.begin() + 1);
        }
        doubles::drawCalls().clear();
        block.draw();
        EXPECT_EQ(doubles::drawnNames(), expected);
    }
}

}  // namespace
