#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

namespace {

TEST(Fontgen, MakesTheCommittedFontAgainOrSaysWhatIsWrongAndWritesNothing) {
    const support::TemporaryDirectory folder;
    const std::string output = folder.path("font.bin");
    const auto run = [&](const char* face) {
        return support::run({KORDANIX_FONTGEN, "--face", face, "--output", output});
    };
    for (const char* const face : {"/nonexistent/face.ttf", KORDANIX_FONT_FILE}) {
        const support::Outcome outcome = run(face);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.err, testing::HasSubstr(face));
        EXPECT_FALSE(std::filesystem::exists(output)) << face;
    }
    if (!std::filesystem::exists(KORDANIX_FONT_FACE)) {
        GTEST_SKIP() << "the face is not installed (fonts-roboto-unhinted): " << KORDANIX_FONT_FACE;
    }
    EXPECT_EQ(run(KORDANIX_FONT_FACE).err, "");
    EXPECT_TRUE(support::readFile(output) == support::readFile(KORDANIX_FONT_FILE));
}

}  // namespace
