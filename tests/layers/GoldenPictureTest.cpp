// What the whole overlay looks like, against pictures that somebody has looked at. scripts/update-golden.sh
// takes over new ones.

#include "software/Png.h"
#include "support/ChildProcess.h"
#include "support/PictureDifference.h"
#include "support/TemporaryDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using software::Image;

struct Picture {
    const char* name;
    const char* device;
    const char* width;
    const char* height;
    std::vector<std::string> settings;
};

void PrintTo(const Picture& picture, std::ostream* out) {
    *out << picture.name;
}

const Picture PICTURES[] = {
    {"MaliLandscape", "mali-b31", "740", "360", {"widget_memory=true"}},
    {"MaliPortrait", "mali-b31", "360", "740", {"widget_memory=true"}},
    {"AdrenoLandscape", "adreno-c32", "740", "360", {"widget_memory=true"}},
    {"AdrenoPortrait", "adreno-c32", "360", "740", {"widget_memory=true"}},
    // Without developer mode the capture key does nothing.
    {"Defaults", "mali-b31", "740", "360", {"devmode=false"}},
    // What is not the default: places, colours, switches.
    {"Settings",
     "adreno-c32",
     "1110",
     "540",
     {"widget_memory=true", "bg_color=2113632", "bg_transparency=200", "widget_fps_position=7",
      "widget_cpu_gpu_position=5", "widget_memory_position=4", "widget_gpu_activity_position=1",
      "widget_gpu_activity_thumbnail_position=3", "widget_cpu_gpu_gpu_freq=true", "widget_fps_median=false",
      "widget_memory_gpu_texture=false", "widget_gpu_activity_fragment_load=false",
      "widget_fps_current_color=16711935", "widget_cpu_gpu_cpu_load_color=65535"}},
};

/// Returns the probe's exit code.
int render(const Picture& picture, const std::string& file) {
    const support::TemporaryDirectory folder;
    std::vector<std::string> command = {GOLDEN_PROBE, picture.width, picture.height, file};
    command.insert(command.end(), picture.settings.begin(), picture.settings.end());
    return support::run(command,
                        {{"KORDANIX_DEVICE", picture.device}, {"KORDANIX_RUNTIME_DIR", folder.path()}})
        .status;
}

class GoldenPicture : public testing::TestWithParam<Picture> {};

TEST_P(GoldenPicture, LooksAsItDidWhenSomebodyLooked) {
    const std::string name = GetParam().name;
    const std::string goldenFile = fs::path(GOLDEN_FOLDER) / (name + ".png");
    const std::string actualFile = fs::path(GOLDEN_OUTPUT) / (name + ".png");
    fs::create_directories(GOLDEN_OUTPUT);
    fs::remove(actualFile);
    ASSERT_EQ(render(GetParam(), actualFile), 0);

    std::string error;
    Image actual;
    ASSERT_TRUE(software::readPng(actualFile, actual, error)) << error;
    if (std::getenv("KORDANIX_UPDATE_GOLDEN") != nullptr) {
        ASSERT_TRUE(software::writePng(actual, goldenFile, error)) << error;
        GTEST_SKIP() << "taken over as " << goldenFile;
    }
    Image expected;
    ASSERT_TRUE(software::readPng(goldenFile, expected, error)) << error;
    EXPECT_LE(comparePictures(expected, actual).share, LARGEST_SHARE)
        << "  expected: " << goldenFile << "\n  drawn:    " << actualFile
        << "\nAfter a look at them, scripts/update-golden.sh takes over the drawn ones.";
}

INSTANTIATE_TEST_SUITE_P(Overlay, GoldenPicture, testing::ValuesIn(PICTURES),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST(GoldenPicture, NeedsADeviceThatThereIs) {
    EXPECT_EQ(render({"", "toaster", "9", "9", {}}, "none.png"), 2);
}

// The comparison must tell one device from the other, which differ in a few figures and graphs only.
TEST(GoldenComparison, SeesOtherFigures) {
    std::string error;
    Image mali;
    Image adreno;
    const std::string folder = GOLDEN_FOLDER;
    ASSERT_TRUE(software::readPng(folder + "/MaliLandscape.png", mali, error)) << error;
    ASSERT_TRUE(software::readPng(folder + "/AdrenoLandscape.png", adreno, error)) << error;
    EXPECT_GT(comparePictures(mali, adreno).share, LARGEST_SHARE);
    for (software::Pixel& pixel : adreno.mPixels = mali.mPixels) {
        pixel.red = static_cast<std::uint8_t>(pixel.red ^ LARGEST_ROUNDING);
    }
    EXPECT_EQ(comparePictures(mali, adreno).share, 0.0);
}

}  // namespace
