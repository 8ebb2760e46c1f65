#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr std::uint32_t WIDTH = 256;
constexpr std::uint32_t HEIGHT = 247;
constexpr std::size_t HEADER_SIZE = 20;
constexpr std::size_t RECORD_SIZE = 32;
const std::string CHARACTERS = " #%(),./0123456789:@ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

struct Record {
    std::uint32_t code, x, y, width, height, xOffset, yOffset, xAdvance;

    std::vector<std::uint32_t> box() const { return {x, y, width, height, xOffset, yOffset, xAdvance}; }
};

std::string readFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The committed font, taken apart.
class Font : public testing::Test {
protected:
    void SetUp() override {
        mBytes = readFile(KORDANIX_FONT_FILE);
        ASSERT_EQ(mBytes.size(), HEADER_SIZE + CHARACTERS.size() * RECORD_SIZE + WIDTH * HEIGHT);
        for (std::size_t i = 0; i < CHARACTERS.size(); ++i) {
            const std::size_t at = HEADER_SIZE + i * RECORD_SIZE;
            mRecords.push_back({field(at), field(at + 4), field(at + 8), field(at + 12), field(at + 16),
                                field(at + 20), field(at + 24), field(at + 28)});
        }
    }

    std::uint32_t field(std::size_t offset) const {
        std::uint32_t value = 0;
        for (std::size_t i = 4; i-- > 0;) {
            value = value << 8U | static_cast<unsigned char>(mBytes[offset + i]);
        }
        return value;
    }

    unsigned int texel(std::uint32_t x, std::uint32_t y) const {
        return static_cast<unsigned char>(mBytes[mBytes.size() - WIDTH * HEIGHT + y * WIDTH + x]);
    }

    unsigned int ink(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) const {
        unsigned int sum = 0;
        for (std::uint32_t row = y; row < y + height; ++row) {
            for (std::uint32_t column = x; column < x + width; ++column) {
                sum += texel(column, row);
            }
        }
        return sum;
    }

    const Record& record(char code) const { return mRecords.at(CHARACTERS.find(code)); }

    std::string mBytes;
    std::vector<Record> mRecords;
};

TEST_F(Font, HeaderAndCodes) {
    const std::uint32_t header[] = {72, WIDTH, HEIGHT, 61, 49};
    for (std::size_t i = 0; i < std::size(header); ++i) {
        EXPECT_EQ(field(4 * i), header[i]) << i;
    }
    EXPECT_EQ(mBytes.size(), 65556U);
    for (std::size_t i = 0; i < CHARACTERS.size(); ++i) {
        EXPECT_EQ(mRecords[i].code, static_cast<std::uint32_t>(CHARACTERS[i]));
    }
}

TEST_F(Font, GivenRecords) {
    const std::map<char, std::vector<std::uint32_t>> given = {
        {' ', {250, 0, 1, 1, 0, 0, 26}},     {'.', {249, 146, 5, 6, 3, 43, 12}},
        {'0', {99, 154, 22, 34, 2, 15, 26}}, {'A', {184, 38, 30, 34, 0, 15, 29}},
        {'g', {53, 45, 21, 35, 2, 23, 26}},  {'j', {30, 0, 11, 45, 0, 13, 12}}};
    for (const auto& [code, box] : given) {
        EXPECT_EQ(record(code).box(), box) << code;
    }
}

TEST_F(Font, DigitsCapitalsAndSwatch) {
    for (char code = '0'; code <= '9'; ++code) {
        EXPECT_EQ(record(code).xAdvance, 26U) << code;
        EXPECT_LE(record(code).xOffset + record(code).width, 26U) << code;
    }
    for (char code = 'A'; code <= 'Z'; ++code) {
        EXPECT_EQ(record(code).yOffset, 15U) << code;
        if (code != 'Q') {  // the tail of "Q" hangs below the baseline
            EXPECT_EQ(record(code).height, 34U) << code;
        }
    }
    const Record& swatch = record('@');
    EXPECT_EQ(swatch.width, 34U);
    EXPECT_EQ(swatch.height, 34U);
    EXPECT_EQ(swatch.yOffset, 15U);
    EXPECT_EQ(swatch.xAdvance, 36U);
    EXPECT_EQ(ink(swatch.x, swatch.y, 34, 34), 34U * 34U * 255U);
}

TEST_F(Font, BoxesAreTightAndInsideBitmapAndLine) {
    for (const Record& glyph : mRecords) {
        SCOPED_TRACE(std::string(1, static_cast<char>(glyph.code)));
        ASSERT_LE(glyph.x + glyph.width, WIDTH);
        ASSERT_LE(glyph.y + glyph.height, HEIGHT);
        EXPECT_LE(glyph.yOffset + glyph.height, 61U);
        EXPECT_LT(glyph.xOffset, glyph.xAdvance);
        EXPECT_LE(glyph.xOffset + glyph.width, glyph.xAdvance + 1);
        if (glyph.code == ' ') {
            EXPECT_EQ(ink(glyph.x, glyph.y, 1, 1), 0U);
            continue;
        }
        EXPECT_GT(ink(glyph.x, glyph.y, glyph.width, 1), 0U);
        EXPECT_GT(ink(glyph.x, glyph.y + glyph.height - 1, glyph.width, 1), 0U);
        EXPECT_GT(ink(glyph.x, glyph.y, 1, glyph.height), 0U);
        EXPECT_GT(ink(glyph.x + glyph.width - 1, glyph.y, 1, glyph.height), 0U);
    }
}

// A sampler that filters sees half a texel beyond a glyph's box: there must be nothing.
TEST_F(Font, OneFreeTexelAroundEveryGlyph) {
    std::vector<unsigned char> owner(WIDTH * HEIGHT, 0);
    unsigned int all = 0;
    for (const Record& glyph : mRecords) {
        const std::uint32_t right = std::min(glyph.x + glyph.width + 1, WIDTH);
        const std::uint32_t bottom = std::min(glyph.y + glyph.height + 1, HEIGHT);
        for (std::uint32_t y = glyph.y; y < bottom; ++y) {
            for (std::uint32_t x = glyph.x; x < right; ++x) {
                ASSERT_EQ(owner[y * WIDTH + x], 0) << static_cast<char>(glyph.code) << " " << x << "," << y;
                owner[y * WIDTH + x] = static_cast<unsigned char>(glyph.code);
            }
        }
        all += ink(glyph.x, glyph.y, glyph.width, glyph.height);
    }
    EXPECT_EQ(all, ink(0, 0, WIDTH, HEIGHT)) << "ink that belongs to no glyph";
}

#ifdef KORDANIX_FONTGEN

struct Outcome {
    int status = -1;
    std::string errors;
};

Outcome runFontgen(const std::string& face, const std::string& output) {
    const std::string command =
        std::string(KORDANIX_FONTGEN) + " --face '" + face + "' --output '" + output + "' 2>&1 >/dev/null";
    Outcome outcome;
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return outcome;
    }
    char buffer[256];
    while (fgets(buffer, sizeof buffer, pipe) != nullptr) {
        outcome.errors += buffer;
    }
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

std::string temporaryName() {
    return testing::TempDir() + "kordanix-font-" + std::to_string(getpid()) + ".bin";
}

TEST(Fontgen, MakesTheCommittedFontAgain) {
    if (access(KORDANIX_FONT_FACE, R_OK) != 0) {
        GTEST_SKIP() << "the face is not installed (fonts-roboto-unhinted): " << KORDANIX_FONT_FACE;
    }
    const std::string output = temporaryName();
    const Outcome outcome = runFontgen(KORDANIX_FONT_FACE, output);
    const std::string made = readFile(output);
    std::remove(output.c_str());
    EXPECT_EQ(outcome.errors, "");
    ASSERT_EQ(outcome.status, 0);
    EXPECT_TRUE(made == readFile(KORDANIX_FONT_FILE)) << "assets/font.bin is not what fontgen makes";
}

TEST(Fontgen, SaysWhatIsWrongAndWritesNothing) {
    const std::string output = temporaryName();
    for (const std::string& face : {std::string("/nonexistent/face.ttf"), std::string(KORDANIX_FONT_FILE)}) {
        const Outcome outcome = runFontgen(face, output);
        EXPECT_EQ(outcome.status, 1) << face;
        EXPECT_THAT(outcome.errors, testing::HasSubstr(face));
        EXPECT_NE(access(output.c_str(), F_OK), 0) << face;
    }
    if (access(KORDANIX_FONT_FACE, R_OK) == 0) {
        const Outcome outcome = runFontgen(KORDANIX_FONT_FACE, "/nonexistent/font.bin");
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.errors, testing::HasSubstr("/nonexistent/font.bin: cannot be written"));
    }
}

#else

TEST(Fontgen, MakesTheCommittedFontAgain) {
    GTEST_SKIP() << "fontgen was not built: FreeType, libpng or CLI11 is missing";
}

#endif

}  // namespace
