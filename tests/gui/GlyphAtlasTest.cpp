#include "doubles/FakeLog.h"
#include "gui/GlyphAtlas.h"

#include <glm/geometric.hpp>
#include <glm/vec4.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const gui::GlyphAtlas& atlas() {
    return gui::GlyphAtlas::getGlyphAtlas();
}

TEST(GlyphAtlas, HoldsTheCharactersOfTheOverlay) {
    const std::string characters = " #%(),./0123456789:@ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::string found;
    for (const auto& entry : atlas().mGlyphs) {
        found += entry.first;
    }
    EXPECT_EQ(found, characters);
    EXPECT_EQ(atlas().mBitmapWidth, 256U);
    EXPECT_EQ(atlas().mBitmapHeight, 247U);
}

TEST(GlyphAtlas, PlacesAGlyphsBoxInTheLine) {
    const gui::Glyph* const glyph = atlas()['A'];
    ASSERT_NE(glyph, nullptr);
    const glm::vec4 topLeft = glyph->mTransform * glm::vec4(-1.0F, -1.0F, 0.0F, 1.0F);
    const glm::vec4 bottomRight = glyph->mTransform * glm::vec4(1.0F, 1.0F, 0.0F, 1.0F);
    const glm::vec2 expected[] = {{-1.0F, 2.0F * 15.0F / 61.0F - 1.0F},
                                  {2.0F * 30.0F / 61.0F - 1.0F, 2.0F * 49.0F / 61.0F - 1.0F}};
    EXPECT_LT(glm::distance(glm::vec2(topLeft), expected[0]), 1e-6F);
    EXPECT_LT(glm::distance(glm::vec2(bottomRight), expected[1]), 1e-6F);
    EXPECT_EQ(glyph->mQuad[1].mPosition, glm::vec2(1.0F, -1.0F));
    EXPECT_EQ(glyph->mQuad[2].mPosition, glm::vec2(-1.0F, 1.0F));
}

TEST(GlyphAtlas, ReportsWhatItDoesNotHold) {
    for (const char symbol : {'?', '-', '\0', '\xc4', '\xff'}) {
        doubles::takeLog();
        EXPECT_EQ(atlas().getGlyphWidth(symbol), 0.0F);
        EXPECT_EQ(atlas()[symbol], nullptr);
        const std::vector<doubles::LogLine> log = doubles::takeLog();
        ASSERT_EQ(log.size(), 2U);
        EXPECT_EQ(log[0].priority, 6);
        const std::string end = symbol == '?' ? "\\?' in Glyph atlas!" : ".*";
        EXPECT_THAT(log[0].text,
                    testing::MatchesRegex("GlyphAtlas.cpp:getGlyphWidth\\([0-9]+\\) No symbol '" + end));
        EXPECT_THAT(log[1].text,
                    testing::MatchesRegex("GlyphAtlas.cpp:operator\\[\\]\\([0-9]+\\) No symbol '.*"));
    }
}

}  // namespace
