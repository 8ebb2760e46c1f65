#include "platform/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string readFile(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

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

}  // namespace
