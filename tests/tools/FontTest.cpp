#include "platform/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <numeric>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t WIDTH = 256;
constexpr std::uint32_t HEIGHT = 247;
constexpr std::size_t HEADER_SIZE = 20;
// Numbers are little-endian, as on every machine this runs on.
const std::string CHARACTERS = " #%(),./0123456789:@ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

struct Record {
    std::uint32_t code, x, y, width, height, xOffset, yOffset, xAdvance;
};

std::string readFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The committed font, taken apart.
class Font : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(mBytes.size(), HEADER_SIZE + CHARACTERS.size() * sizeof(Record) + WIDTH * HEIGHT);
        for (std::size_t i = 0; i < CHARACTERS.size(); ++i) {
            std::memcpy(&mRecords[CHARACTERS[i]], &mBytes[HEADER_SIZE + i * sizeof(Record)], sizeof(Record));
        }
    }

    unsigned int ink(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) const {
        unsigned int sum = 0;
        for (std::uint32_t row = y; row < y + height; ++row) {
            const char* const texels = &mBytes[mBytes.size() - WIDTH * HEIGHT + row * WIDTH + x];
            sum = std::accumulate(texels, texels + width, sum, [](unsigned int before, char texel) {
                return before + static_cast<unsigned char>(texel);
            });
        }
        return sum;
    }

    const std::string mBytes = readFile(KORDANIX_FONT_FILE);
    std::map<char, Record> mRecords;
};

TEST_F(Font, HasTheGivenHeaderAndRecords) {
    const std::uint32_t header[] = {72, WIDTH, HEIGHT, 61, 49};
    EXPECT_EQ(std::memcmp(mBytes.data(), header, sizeof(header)), 0);
    for (const Record& given : {Record{' ', 250, 0, 1, 1, 0, 0, 26},
                                {'.', 249, 146, 5, 6, 3, 43, 12},
                                {'0', 99, 154, 22, 34, 2, 15, 26},
                                {'A', 184, 38, 30, 34, 0, 15, 29},
                                {'g', 53, 45, 21, 35, 2, 23, 26},
                                {'j', 30, 0, 11, 45, 0, 13, 12}}) {
        EXPECT_EQ(std::memcmp(&mRecords[static_cast<char>(given.code)], &given, sizeof(given)), 0)
            << static_cast<char>(given.code);
    }
    const Record& swatch = mRecords['@'];
    EXPECT_TRUE(swatch.width == 34 && swatch.height == 34 && swatch.yOffset == 15 && swatch.xAdvance == 36);
    EXPECT_EQ(ink(swatch.x, swatch.y, 34, 34), 34U * 34U * 255U);
}

// A sampler that filters sees half a texel beyond a glyph's box: there must be nothing.
TEST_F(Font, OneFreeTexelAroundEveryGlyph) {
    std::vector<char> owner(WIDTH * HEIGHT, 0);
    unsigned int all = 0;
    for (const auto& [character, glyph] : mRecords) {
        ASSERT_LE(glyph.x + glyph.width, WIDTH);
        ASSERT_LE(glyph.y + glyph.height, HEIGHT);
        for (std::uint32_t y = glyph.y; y < std::min(glyph.y + glyph.height + 1, HEIGHT); ++y) {
            for (std::uint32_t x = glyph.x; x < std::min(glyph.x + glyph.width + 1, WIDTH); ++x) {
                ASSERT_EQ(owner[y * WIDTH + x], 0) << character << " " << x << "," << y;
                owner[y * WIDTH + x] = character;
            }
        }
        all += ink(glyph.x, glyph.y, glyph.width, glyph.height);
    }
    EXPECT_EQ(all, ink(0, 0, WIDTH, HEIGHT)) << "ink that belongs to no glyph";
}

#ifdef KORDANIX_FONTGEN

/// Runs fontgen for a font "font.bin": what it says.
std::string runFontgen(const std::string& face, const std::string& folder) {
    const std::string command = std::string(KORDANIX_FONTGEN) + " --face '" + face + "' --output '" + folder +
                                "/font.bin' >/dev/null 2>'" + folder + "/errors'";
    const int status = std::system(command.c_str());
    const std::string errors = readFile(folder + "/errors");
    EXPECT_EQ(WEXITSTATUS(status), errors.empty() ? 0 : 1);
    return errors;
}

TEST(Fontgen, MakesTheCommittedFontAgain) {
    if (access(KORDANIX_FONT_FACE, R_OK) != 0) {
        GTEST_SKIP() << "the face is not installed (fonts-roboto-unhinted): " << KORDANIX_FONT_FACE;
    }
    const platform::TemporaryDirectory folder;
    EXPECT_EQ(runFontgen(KORDANIX_FONT_FACE, folder.path()), "");
    EXPECT_TRUE(readFile(folder.path("font.bin")) == readFile(KORDANIX_FONT_FILE));
}

TEST(Fontgen, SaysWhatIsWrongAndWritesNothing) {
    const platform::TemporaryDirectory folder;
    for (const std::string face : {"/nonexistent/face.ttf", KORDANIX_FONT_FILE}) {
        EXPECT_THAT(runFontgen(face, folder.path()), testing::HasSubstr(face));
        EXPECT_NE(access(folder.path("font.bin").c_str(), F_OK), 0) << face;
    }
}

#endif

}  // namespace
