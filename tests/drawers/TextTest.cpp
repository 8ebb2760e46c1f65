#include "doubles/FakeLog.h"
#include "doubles/RecordingPrimitives.h"
#include "drawers/TextDrawer.h"
#include "drawers/TextblockDrawer.h"
#include "gui/GlyphAtlas.h"

#include <gmock/gmock.h>

namespace {

using doubles::RecordingText;

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

TEST(Text, IsShortenedOnlyWhenItDoesNotFitAndLosesBytesWithoutGlyph) {
    RecordingText text;
    text.setText("Vertex \xc3shader");
    text.setTextEllipsize(gui::TextEllipsize::END);
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

TEST(Textblock, ShowsTheLastLinesOldestFirst) {
    drawer::TextblockDrawer block(doubles::createRecordingText, std::make_unique<doubles::RecordingRect>(), 3,
                                  35);
    block.mSize = {0.5F, 0.3F};
    std::vector<std::string> expected = {"background"};
    for (const char* const line : {"a", "b", "c", "d", "e", "f", "g"}) {
        block.addText(line);
        expected.emplace_back(line);
        expected.erase(expected.begin() + 1,
                       expected.end() - std::min<std::ptrdiff_t>(3, std::ptrdiff_t(expected.size()) - 1));
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
