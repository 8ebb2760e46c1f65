// The whole overlay on simulated devices, as OpenGL and as the software layer draw it.

#include "opengl/draw/PictureDifference.h"
#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "software/Png.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <string>
#include <vector>

namespace {

struct Picture {
    const char* name;
    const char* device;
    const char* width;
    const char* height;
    std::vector<std::string> apis;
};

void PrintTo(const Picture& picture, std::ostream* out) {
    *out << picture.name;
}

const Picture PICTURES[] = {
    {"Landscape", "mali-b31", "1280", "720", {"gl2", "es3"}},
    {"Portrait", "adreno-c32", "720", "1280", {"core"}},
    {"Small", "adreno-c32", "320", "200", {"es2"}},
};

/// False when the probe fails.
bool render(const Picture& picture, const std::string& api, const std::string& file, software::Image& image) {
    const platform::TemporaryDirectory folder;
    std::vector<std::string> texts = {"draw_probe",   api,  picture.width,
                                      picture.height, file, "widget_memory=true"};
    std::vector<char*> arguments;
    for (std::string& text : texts) {
        arguments.push_back(text.data());
    }
    arguments.push_back(nullptr);
    const int code = platform::waitForChild(platform::startChild([&] {
        setenv("KORDANIX_DEVICE", picture.device, 1);
        setenv("KORDANIX_RUNTIME_DIR", folder.path().c_str(), 1);
        setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
        execv(DRAW_PROBE, arguments.data());
        return 127;
    }));
    std::string error;
    return code == 0 && software::readPng(file, image, error);
}

class OverlayPicture : public testing::TestWithParam<Picture> {};

TEST_P(OverlayPicture, IsTheSoftwareLayers) {
    const std::string prefix = std::string(DRAW_OUTPUT) + "/draw-" + GetParam().name + "-";
    software::Image expected;
    ASSERT_TRUE(render(GetParam(), "software", prefix + "software.png", expected));
    for (const std::string& api : GetParam().apis) {
        SCOPED_TRACE(prefix + api + ".png");
        software::Image drawn;
        ASSERT_TRUE(render(GetParam(), api, prefix + api + ".png", drawn));
        const PictureDifference difference = comparePictures(expected, drawn);
        EXPECT_LE(difference.largestInside, LARGEST_INSIDE);
        EXPECT_LE(difference.largestAtEdges, LARGEST_AT_EDGES);
        EXPECT_LE(difference.meanAtEdges, LARGEST_MEAN_AT_EDGES);
        RecordProperty(api, std::to_string(difference.largestAtEdges) + " at most, " +
                                std::to_string(difference.meanAtEdges) + " on average at edges");
    }
}

INSTANTIATE_TEST_SUITE_P(Devices, OverlayPicture, testing::ValuesIn(PICTURES),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
