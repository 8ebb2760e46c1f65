#include "doubles/FakeLog.h"
#include "doubles/RecordingPrimitives.h"
#include "drawers/TextDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/GlyphAtlas.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using doubles::RecordingText;
using gui::TextEllipsize;
using gui::TextGravity;

const gui::GlyphAtlas& atlas() {
    return gui::GlyphAtlas::getGlyphAtlas();
}

float widthOf(const std::string& text) {
    float width = 0.0F;
    for (const char symbol : text) {
        width += atlas().getGlyphWidth(symbol);
    }
    return width;
}

// What a glyph's transform does to its own placement: where the pen stands, and how long line units are.
TEST(Text, FitsTheLineIntoItsBox) {
    const struct {
        float widthInLines;  // of the box, in multiples of what the text needs at full height
        TextGravity gravity;
        float left;   // expected start, as a share of the free width
        float scale;  // expected line height, as a share of the box's
    } cases[] = {{2.0F, TextGravity::LEFT, 0.0F, 1.0F},
                 {2.0F, TextGravity::RIGHT, 1.0F, 1.0F},
                 {3.0F, TextGravity::CENTER, 0.5F, 1.0F},
                 {3.0F, static_cast<TextGravity>(9), 0.0F, 1.0F},
                 {0.25F, TextGravity::RIGHT, 0.0F, 0.25F}};
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        RecordingText text;
        const float natural = widthOf("GPU 59.9") * 0.05F * text.getAspectRatio();
        text.mPosition = {0.2F, 0.3F};
        text.mSize = {natural * c.widthInLines, 0.1F};
        text.setText("GPU 59.9");
        text.setTextGravity(c.gravity);
        text.draw();
        float pen = 0.2F + (text.mSize.x - natural * c.scale) * c.left;
        for (const RecordingText::DrawnGlyph& drawn : text.mGlyphs) {
            const glm::mat4 line = drawn.transform * glm::inverse(atlas()[drawn.symbol]->mTransform);
            const glm::vec4 start = line * glm::vec4(-1.0F, -1.0F, 0.0F, 1.0F);
            EXPECT_NEAR(start.x, pen, 1e-5F);
            EXPECT_NEAR(start.y, 0.3F + 0.05F * (1.0F - c.scale), 1e-5F) << "centred when scaled down";
            EXPECT_NEAR(line[1].y * 2.0F, 0.1F * c.scale, 1e-5F);
            pen += natural * c.scale * widthOf({drawn.symbol}) / widthOf("GPU 59.9");
        }
    }
}

TEST(Text, TruncationKeepsLessThanTheWidth) {
    const float dots = widthOf("...");
    const float digit = widthOf("0");
    const float little = 0.001F;
    const std::tuple<TextEllipsize, std::string, float, std::string> cases[] = {
        {static_cast<TextEllipsize>(7), "0123456789", 0.0F, "0123456789"},
        {TextEllipsize::END, "0123456789", dots + 3 * digit + little, "012..."},
        {TextEllipsize::END, "0123456789", dots + 3 * digit - little, "01..."},
        {TextEllipsize::END, "01", 100.0F, "01..."},
        {TextEllipsize::START, "0123456789", dots + 3 * digit + little, "...789"},
        {TextEllipsize::START, "0", 100.0F, "..."},
        {TextEllipsize::MIDDLE, "0123456789", dots + 5 * digit + little, "01...89"},
        {TextEllipsize::MIDDLE, "0123456", 100.0F, "012...456"},
        {TextEllipsize::END, "0123", dots - little, "..."},
        {TextEllipsize::MIDDLE, "", 100.0F, "..."},
    };
    RecordingText text;
    for (const auto& [mode, whole, width, result] : cases) {
        text.setText(whole);
        text.setTextEllipsize(mode);
        EXPECT_EQ(text.getTruncatedString(width), result) << static_cast<int>(mode) << whole << width;
    }
}

TEST(Text, IsShortenedOnlyWhenItDoesNotFitAndLosesBytesWithoutGlyph) {
    RecordingText text;
    text.setText("Vertex \xc3shader");
    text.setTextEllipsize(TextEllipsize::END);
    const float natural = widthOf("Vertex shader") * 0.05F * text.getAspectRatio();
    text.mSize = {natural * 1.0001F, 0.1F};
    doubles::takeLog();
    text.draw();
    EXPECT_EQ(text.mDrawnText, "Vertex shader");
    EXPECT_THAT(doubles::takeLog().back().text,
                testing::ContainsRegex("TextDrawer.cpp:draw\\([0-9]+\\) No Glyph\\(0xc3\\) in font"));
    text.mSize.x = natural * 0.8F;
    text.draw();
    EXPECT_THAT(text.mDrawnText, testing::MatchesRegex("Vertex.*\\.\\.\\."));
    EXPECT_NEAR(text.mGlyphs.back().transform[1].y / atlas()['.']->mTransform[1].y, 0.05F, 1e-5F)
        << "at its full height";
}

TEST(Text, SizeHintShrinksTheBoxAroundItsMiddle) {
    // The box is 36 pixels high on a surface of 360.
    for (const auto& [hint, position, size] :
         {std::tuple(0U, 0.5F, 0.1F), {18U, 0.525F, 0.05F}, {36U, 0.5F, 0.1F}}) {
        RecordingText text;
        text.mPosition = {0.0F, 0.5F};
        text.mSize = {1.0F, 0.1F};
        text.setTextSizeHint(hint);
        text.draw();
        EXPECT_NEAR(text.mTextPosition.y, position, 1e-5F) << hint;
        EXPECT_NEAR(text.mTextSize.y, size, 1e-5F) << hint;
    }
}

TEST(Textblock, ShowsTheLastLinesOldestFirst) {
    drawer::TextblockDrawer block(doubles::createRecordingText, std::make_unique<doubles::RecordingRect>(), 3,
                                  35);
    block.mSize = {0.5F, 0.3F};
    std::vector<std::string> expected = {"background"};
    for (const char* const line : {"a", "b", "c", "d", "e", "f", "g"}) {
        block.addText(line);
        expected.emplace_back(line);
        expected.erase(expected.begin() + 1, expected.end() - std::min<long>(3, expected.size() - 1));
        doubles::drawCalls().clear();
        block.draw();
        EXPECT_EQ(doubles::drawnNames(), expected);
    }
}

TEST(GlyphAtlas, HoldsTheCharactersOfTheOverlayAndReportsOthers) {
    std::string found;
    for (const auto& entry : atlas().mGlyphs) {
        found += entry.first;
    }
    EXPECT_EQ(found, " #%(),./0123456789:@ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");
    for (const char symbol : {'?', '\0', '\xff'}) {
        doubles::takeLog();
        EXPECT_EQ(atlas().getGlyphWidth(symbol), 0.0F);
        EXPECT_EQ(atlas()[symbol], nullptr);
        EXPECT_THAT(doubles::takeLog(),
                    testing::ElementsAre(
                        testing::Field(&doubles::LogLine::text,
                                       testing::ContainsRegex("^GlyphAtlas.cpp:getGlyphWidth.* No symbol '")),
                        testing::Field(&doubles::LogLine::text,
                                       testing::ContainsRegex("^GlyphAtlas.cpp:operator.* No symbol '"))));
    }
}

}  // namespace
