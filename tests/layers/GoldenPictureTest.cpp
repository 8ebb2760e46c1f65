// What the whole overlay looks like, against pictures that somebody has looked at. scripts/update-golden.sh
// takes over new ones.

#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "software/Image.h"
#include "software/Png.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using software::Image;
using software::Pixel;

/// Compilers may round floating-point arithmetic differently: a channel may differ by this much anywhere,
/// and by more in this share of the pixels, where an edge fell on another side of a rounding limit.
constexpr int LARGEST_DIFFERENCE = 2;
constexpr double LARGEST_SHARE = 0.0005;

int difference(const Pixel& a, const Pixel& b) {
    return std::max({std::abs(a.mRed - b.mRed), std::abs(a.mGreen - b.mGreen), std::abs(a.mBlue - b.mBlue),
                     std::abs(a.mAlpha - b.mAlpha)});
}

/// Share of the pixels that differ by more than is allowed; 1 when the sizes differ.
double differingShare(const Image& expected, const Image& actual) {
    if (expected.mWidth != actual.mWidth || expected.mHeight != actual.mHeight || expected.mPixels.empty()) {
        return 1.0;
    }
    std::size_t count = 0;
    for (std::size_t i = 0; i < expected.mPixels.size(); ++i) {
        count += difference(expected.mPixels[i], actual.mPixels[i]) > LARGEST_DIFFERENCE ? 1 : 0;
    }
    return static_cast<double>(count) / static_cast<double>(expected.mPixels.size());
}

/// The expected picture, dark and grey; red where the other one differs, dull red where it is allowed to.
Image differencePicture(const Image& expected, const Image& actual) {
    Image picture(expected.mWidth, expected.mHeight);
    for (std::size_t i = 0; i < picture.mPixels.size(); ++i) {
        const Pixel& pixel = expected.mPixels[i];
        const auto grey = static_cast<std::uint8_t>((pixel.mRed + pixel.mGreen + pixel.mBlue) / 9);
        picture.mPixels[i] = {grey, grey, grey, 255};
        if (i < actual.mPixels.size() && !(pixel == actual.mPixels[i])) {
            const bool isAllowed = difference(pixel, actual.mPixels[i]) <= LARGEST_DIFFERENCE;
            picture.mPixels[i].mRed = isAllowed ? 120 : 255;
        }
    }
    return picture;
}

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
    const platform::TemporaryDirectory folder;
    std::vector<std::string> texts = {"golden_probe", picture.width, picture.height, file};
    texts.insert(texts.end(), picture.settings.begin(), picture.settings.end());
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    return platform::waitForChild(platform::startChild([&] {
        setenv("KORDANIX_DEVICE", picture.device, 1);
        setenv("KORDANIX_RUNTIME_DIR", folder.path().c_str(), 1);
        execv(GOLDEN_PROBE, arguments.data());
        return 127;
    }));
}

class GoldenPicture : public testing::TestWithParam<Picture> {};

TEST_P(GoldenPicture, LooksAsItDidWhenSomebodyLooked) {
    const std::string name = GetParam().name;
    const std::string goldenFile = std::string(GOLDEN_FOLDER) + "/" + name + ".png";
    const std::string actualFile = std::string(GOLDEN_OUTPUT) + "/" + name + ".png";
    const std::string differenceFile = std::string(GOLDEN_OUTPUT) + "/" + name + "-difference.png";
    fs::create_directories(GOLDEN_OUTPUT);
    fs::remove(actualFile);
    fs::remove(differenceFile);
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
    const double share = differingShare(expected, actual);
    if (share > LARGEST_SHARE) {
        ASSERT_TRUE(software::writePng(differencePicture(expected, actual), differenceFile, error)) << error;
        ADD_FAILURE() << share * 100.0 << " % of the pixels differ (" << expected.mWidth << " by "
                      << expected.mHeight << " pixels expected, " << actual.mWidth << " by " << actual.mHeight
                      << " drawn)\n  expected:   " << goldenFile << "\n  drawn:      " << actualFile
                      << "\n  difference: " << differenceFile
                      << "\nAfter a look at them, scripts/update-golden.sh takes over the drawn ones.";
    }
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
    EXPECT_GT(differingShare(mali, adreno), LARGEST_SHARE);
    EXPECT_EQ(differingShare(mali, mali), 0.0);

    // At the limits: one pixel in 2,000 may differ by more, all by 2.
    Image near = mali;
    for (Pixel& pixel : near.mPixels) {
        pixel.mRed = static_cast<std::uint8_t>(pixel.mRed < 128 ? pixel.mRed + 2 : pixel.mRed - 2);
    }
    EXPECT_EQ(differingShare(mali, near), 0.0);
    for (std::size_t i = 0; i < near.mPixels.size() / 1000; ++i) {
        near.mPixels[i].mBlue = static_cast<std::uint8_t>(near.mPixels[i].mBlue ^ 128);
    }
    EXPECT_GT(differingShare(mali, near), LARGEST_SHARE);
}

}  // namespace
