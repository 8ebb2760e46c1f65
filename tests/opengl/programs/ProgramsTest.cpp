#include "gui/LayoutManager.h"
#include "opengl/context/VirtualDisplay.h"
#include "software/Png.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <regex>

namespace {

using Command = std::vector<std::string>;
using software::Image;

VirtualDisplay& display() {
    return VirtualDisplay::get();
}

/// The widgets' usual black background would not be seen over black.
Command underOverlay(const Command& command) {
    Command all{KORDANIXCTL, "run", "--set", "bg_color=#FFFFFF", "--"};
    all.insert(all.end(), command.begin(), command.end());
    return all;
}

std::map<std::string, std::string> environment(bool isFrozen) {
    std::map<std::string, std::string> variables{{"DISPLAY", display().name()}, {"vblank_mode", "0"}};
    if (isFrozen) {
        variables["LD_PRELOAD"] = FROZEN_CLOCK;
    }
    return variables;
}

std::optional<Image> pictureOf(const Command& command, bool isStill) {
    const support::ChildProcess program(command, environment(isStill));
    return display().windowPicture(isStill);
}

struct PixelBox {
    int left, top, right, bottom;
    bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
    int area() const { return (right - left) * (bottom - top); }
};

/// Where the widgets that are on by default stand on a surface of this size.
std::vector<PixelBox> widgetBoxes(const Image& picture) {
    gui::LayoutManager& layout = *gui::LayoutManager::getInstance();
    layout.updateConfig();
    layout.updateWidgetsLayouts(picture.mHeight > picture.mWidth);
    std::vector<PixelBox> boxes;
    for (const gui::Widget* widget : layout.mWidgets) {
        if (widget->mEnabled) {
            const glm::vec4& area = widget->mRect;
            const auto width = static_cast<float>(picture.mWidth);
            const auto height = static_cast<float>(picture.mHeight);
            boxes.push_back({static_cast<int>(std::floor(area.x * width)),
                             static_cast<int>(std::floor(area.y * height)),
                             static_cast<int>(std::ceil((area.x + area.z) * width)),
                             static_cast<int>(std::ceil((area.y + area.w) * height))});
        }
    }
    return boxes;
}

/// Pixels that differ in each box, and outside them all in the last place.
std::vector<int> differences(const Image& bare, const Image& overlaid, const std::vector<PixelBox>& boxes) {
    std::vector<int> counts(boxes.size() + 1, 0);
    for (int y = 0; y < static_cast<int>(bare.mHeight); ++y) {
        for (int x = 0; x < static_cast<int>(bare.mWidth); ++x) {
            const auto row = static_cast<std::size_t>(y);
            if (bare.row(row)[x] == overlaid.row(row)[x]) {
                continue;
            }
            const auto box =
                std::find_if(boxes.begin(), boxes.end(), [&](const PixelBox& b) { return b.contains(x, y); });
            ++counts[static_cast<std::size_t>(box - boxes.begin())];
        }
    }
    return counts;
}

struct RealProgram {
    const char* name;
    Command command;
    bool isStill;  ///< with a clock that stands still, its picture does so too
};

class OverRealPrograms : public testing::TestWithParam<RealProgram> {};

TEST_P(OverRealPrograms, TheWidgetsAreInThePictureAndNothingElseHasChanged) {
    ASSERT_THAT(display().name(), testing::Not(testing::IsEmpty()));
    const RealProgram& program = GetParam();
    const std::optional<Image> bare = pictureOf(program.command, program.isStill);
    const std::optional<Image> overlaid = pictureOf(underOverlay(program.command), program.isStill);
    ASSERT_TRUE(bare && overlaid);
    ASSERT_EQ(bare->mWidth, overlaid->mWidth);
    ASSERT_EQ(bare->mHeight, overlaid->mHeight);
    std::string error;
    software::writePng(*overlaid, std::string("program-") + program.name + ".png", error);

    const std::vector<PixelBox> boxes = widgetBoxes(*bare);
    ASSERT_FALSE(boxes.empty());
    const std::vector<int> changed = differences(*bare, *overlaid, boxes);
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        EXPECT_GT(changed[i], boxes[i].area() / 4) << "widget " << i;
    }
    if (program.isStill) {
        EXPECT_EQ(changed.back(), 0) << "pixels outside the widgets";
    }
}

// Linked, looked up on a library's handle, by EGL and by GLX: each program in its own way.
INSTANTIATE_TEST_SUITE_P(
    Each, OverRealPrograms,
    testing::Values(RealProgram{"glxgears", {"glxgears", "-geometry", "740x360"}, true},
                    RealProgram{"glxgears_upright", {"glxgears", "-geometry", "360x740"}, true},
                    RealProgram{"es2gears", {"es2gears_x11"}, true},
                    RealProgram{"glmark2", {"glmark2", "-b", "build", "-s", "800x600"}, true},
                    RealProgram{"glmark2_es2", {"glmark2-es2", "-b", "shading", "-s", "800x600"}, true},
                    RealProgram{"sdl_gl2", {SDL_PROGRAMS "testgl2"}, false},
                    RealProgram{"sdl_gles2", {SDL_PROGRAMS "testgles2"}, false}),
    [](const auto& each) { return std::string(each.param.name); });

/// Digits out, since they are speeds, and what 'run' adds when a program ended before its first frame.
std::string withoutNumbers(const std::string& text) {
    static const std::regex added("kordanixctl: the overlay was not shown: .*\n");
    static const std::regex number("[0-9]+(\\.[0-9]+)?");
    return std::regex_replace(std::regex_replace(text, added, ""), number, "N");
}

TEST(RealPrograms, WhatTheyPrintAndReturnIsTheirOwn) {
    ASSERT_THAT(display().name(), testing::Not(testing::IsEmpty()));
    struct Case {
        Command command;
        bool hasDisplay;
    };
    const Case cases[] = {{{"glmark2", "-b", "build:duration=0.3", "-s", "320x200"}, true},
                          {{"glmark2-es2", "-b", "texture:duration=0.3", "-s", "320x200"}, true},
                          {{"glxgears", "-badoption"}, true},
                          {{"glxgears"}, false},
                          {{"es2gears_x11"}, false}};
    for (const Case& item : cases) {
        std::map<std::string, std::string> variables = environment(false);
        if (!item.hasDisplay) {
            variables["DISPLAY"] = ":none";
        }
        const support::Outcome bare = support::run(item.command, variables);
        const support::Outcome overlaid = support::run(underOverlay(item.command), variables);
        EXPECT_EQ(overlaid.status, bare.status) << item.command[0];
        EXPECT_EQ(withoutNumbers(overlaid.out), withoutNumbers(bare.out));
        EXPECT_EQ(withoutNumbers(overlaid.err), withoutNumbers(bare.err));
        EXPECT_FALSE(bare.out.empty() && bare.err.empty());
    }
}

TEST(RealPrograms, AreLeftAloneForAReasonThatIsTold) {
    ASSERT_THAT(display().name(), testing::Not(testing::IsEmpty()));
    const struct {
        const char* words;
        const char* reason;
    } cases[] = {
        {"surface=pbuffer", "it swaps a pbuffer"},
        {"surface=pixmap", "a pixmap or has a single buffer"},
        {"surface=single api=gl", "a pixmap or has a single buffer"},
        {"surface=preserved", "EGL_BUFFER_PRESERVED"},
        {"window=glx surface=pbuffer", "it swaps a pbuffer"},
        {"window=glx surface=pixmap", "it swaps a pixmap"},
        {"window=glx surface=single", "has a single buffer"},
        {"state=deleted-program", "its current program was deleted"},
        {"state=list api=gl", "a display list is being compiled"},
        {"size=1x1", "only one pixel"},
        {"frames=0; ulimit -f 0; exec 2>/dev/null", "kordanixctl: the overlay was not shown"},
    };
    for (const auto& [words, reason] : cases) {
        // The limit is set before the program, which its words come after.
        const std::string text(words);
        const std::size_t end = text.find(';');
        const std::string limit = end == std::string::npos ? ":" : text.substr(end + 1);
        const std::string line = limit + "; exec " PLAIN_CLIENT " frames=15 " + text.substr(0, end);
        const support::Outcome outcome =
            support::run({KORDANIXCTL, "run", "--", "sh", "-c", line}, environment(false));
        EXPECT_EQ(outcome.status, 0) << words;
        EXPECT_THAT(outcome.err, testing::HasSubstr(reason)) << words;
        const bool isCounted = text.find("surface=") != std::string::npos;
        EXPECT_EQ(outcome.out, isCounted ? "0 pixels changed\n" : "") << words;
    }
}

}  // namespace
