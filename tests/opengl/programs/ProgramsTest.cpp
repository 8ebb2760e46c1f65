#include "opengl/context/VirtualDisplay.h"
#include "opengl/context/WidgetPixels.h"
#include "software/Png.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <regex>

namespace {

using Command = std::vector<std::string>;
using software::Image;

VirtualDisplay& display() {
    return VirtualDisplay::get();
}

/// The widgets' usual black background would not be seen over black. While the clock stands still there are
/// no figures, and only widgets that somebody asked for are there.
Command underOverlay(const Command& command) {
    Command all{
        KORDANIXCTL,           "run", "--set", "bg_color=#FFFFFF", "--set", "widget_fps=true", "--set",
        "widget_cpu_gpu=true", "--"};
    all.insert(all.end(), command.begin(), command.end());
    return all;
}

std::map<std::string, std::string> environment(bool isFrozen) {
    std::map<std::string, std::string> variables{
        {"DISPLAY", display().name()}, {"vblank_mode", "0"}, {"XDG_CONFIG_HOME", "/nowhere"}};
    if (isFrozen) {
        variables["LD_PRELOAD"] = FROZEN_CLOCK;
    }
    return variables;
}

std::optional<Image> pictureOf(const Command& command, bool isStill) {
    const support::ChildProcess program(command, environment(isStill));
    return display().windowPicture(isStill);
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

    std::vector<PixelShare> shares = compareWidgets(*bare, *overlaid);
    EXPECT_TRUE(shares.back().differing == 0 || !program.isStill) << "pixels outside the widgets";
    shares.pop_back();
    ASSERT_FALSE(shares.empty());
    for (const PixelShare& widget : shares) {
        EXPECT_GT(widget.differing, widget.all / 4) << "widget " << &widget - shares.data();
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
                    RealProgram{"sdl_gles2", {SDL_PROGRAMS "testgles2"}, false},
                    RealProgram{"vkcube", {"vkcube"}, false}),
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
                          {{"vkcube", "--c", "30"}, true},
                          {{"vkcube", "--badoption"}, true},
                          {{"glxgears"}, false},
                          {{"es2gears_x11"}, false},
                          {{"vkcube"}, false}};
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
