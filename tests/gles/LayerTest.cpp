#include "opengl/context/VirtualDisplay.h"
#include "opengl/context/WidgetPixels.h"
#include "properties/SystemProperties.h"
#include "software/Png.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

namespace {

using support::ChildProcess;
using testing::HasSubstr;
using testing::Not;
using Command = std::vector<std::string>;

/// Programs on a device with the layer switched on.
class GlesLayer : public testing::Test {
protected:
    void SetUp() override { ASSERT_THAT(VirtualDisplay::get().name(), Not(testing::IsEmpty())); }

    /// As `kordanixctl android` leaves a device.
    void switchOn(const std::string& program, const Command& settings = {}) {
        Command command = {KORDANIXCTL, "set", "status", "true", "proc", program, "bg_color", "#FFFFFF"};
        command.insert(command.end(), settings.begin(), settings.end());
        const support::Outcome outcome = support::run(command, mEnvironment);
        ASSERT_EQ(outcome.status, 0) << outcome.err;
    }

    support::Outcome runClient(const std::string& way, const std::string& argument = "") {
        return support::run({CLIENT, way, argument}, mEnvironment);
    }

    support::TemporaryDirectory mRuntime;
    ChildProcess::Environment mEnvironment = {{"LD_LIBRARY_PATH", LOADER},
                                              {"LOADER_LAYERS", LAYER},
                                              {"KORDANIX_RUNTIME_DIR", mRuntime.path()},
                                              {"DISPLAY", VirtualDisplay::get().name()},
                                              {"LIBGL_ALWAYS_SOFTWARE", "1"},
                                              {"vblank_mode", "0"}};
};

TEST_F(GlesLayer, IsInThePictureOfUnchangedProgramsAndNothingElseHasChanged) {
    const struct {
        Command command;
        ChildProcess::Environment variables;
    } programs[] = {
        {{"es2gears_x11"}, {}},
        {{"glmark2-es2", "-b", "shading", "-s", "800x600"}, {}},
        // A driver without OpenGL ES 3, whose functions are there all the same and do nothing.
        {{"es2gears_x11"}, {{"MESA_GLES_VERSION_OVERRIDE", "2.0"}, {"LOADER_ES2", "yes"}}},
        // A driver that has only the other extension for blending by draw buffer.
        {{"es2gears_x11"},
         {{"MESA_GLES_VERSION_OVERRIDE", "3.1"}, {"LOADER_WITHOUT", "GL_OES_draw_buffers_indexed"}}},
        // A list with a layer that is not there, and ours twice.
        {{"es2gears_x11"}, {{"LOADER_LAYERS", LAYER ":/nowhere/libOther.so:" LAYER}}},
    };
    for (const auto& each : programs) {
        const Command& command = each.command;
        const ChildProcess::Environment& variables = each.variables;
        SCOPED_TRACE(command[0] + (variables.empty() ? "" : ", " + variables.rbegin()->first));
        ChildProcess::Environment environment = mEnvironment;
        environment.insert({"LD_PRELOAD", FROZEN_CLOCK});
        for (const auto& [name, value] : variables) {
            environment[name] = value;
        }
        const auto pictureOf = [&](std::string& errors) {
            const ChildProcess program(command, environment);
            const auto picture = VirtualDisplay::get().windowPicture(true);
            errors = program.errors();
            return picture;
        };
        switchOn("none", {"widget_fps", "true", "widget_cpu_gpu", "true"});
        std::string errors;
        const auto bare = pictureOf(errors);
        switchOn(command[0]);
        const auto overlaid = pictureOf(errors);
        ASSERT_TRUE(bare && overlaid) << errors;
        EXPECT_THAT(errors, Not(HasSubstr("loader: called unimplemented")));
        ASSERT_EQ(bare->mPixels.size(), overlaid->mPixels.size());
        std::vector<PixelShare> shares = compareWidgets(*bare, *overlaid);
        EXPECT_EQ(shares.back().differing, 0) << "pixels outside the widgets";
        shares.pop_back();
        for (const PixelShare& widget : shares) {
            EXPECT_GT(widget.differing, widget.all / 4);
        }
        EXPECT_FALSE(shares.empty());
    }
}

TEST_F(GlesLayer, IsLeftWholeByProgramsThatRedrawInPartAndLeavesNothingBehind) {
    switchOn(CLIENT);
    mEnvironment["LOADER_TRACE"] = "yes";
    const Command plain = {CLIENT, "parts", KORDANIXCTL " set status false"};
    Command preloaded = {KORDANIXCTL, "run", "--"};
    preloaded.insert(preloaded.end(), plain.begin(), plain.end());
    for (const Command& command : {plain, preloaded}) {
        SCOPED_TRACE(command.front());
        const support::Outcome outcome = support::run(command, mEnvironment);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_THAT(outcome.out, HasSubstr("10 of 10 frames drawn whole, overlay shown\n"));
        EXPECT_THAT(outcome.out, HasSubstr("damage of 0 rectangles\nregion 0 0 740 360\n"));
        EXPECT_THAT(outcome.out, HasSubstr("region 0 0 8 8\ndamage of 1 rectangles\n"));
        EXPECT_THAT(outcome.out, HasSubstr("20 frames in part, then 0 values changed\n"));
        EXPECT_THAT(outcome.out, Not(HasSubstr("no damage region")));
        mEnvironment["LOADER_LAYERS"] = "";  // and then by the preloaded shim
    }
}

TEST_F(GlesLayer, PassesTheToolkitsThreadThroughUnlessToldOtherwise) {
    switchOn(CLIENT);
    EXPECT_THAT(runClient("toolkit").out, HasSubstr("1 of 60 frames drawn whole, overlay gone\n"));
    switchOn(CLIENT, {"renderthread", "true"});
    EXPECT_THAT(runClient("toolkit").out, HasSubstr("overlay shown\n"));
}

TEST_F(GlesLayer, FollowsContextsAndLateNames) {
    switchOn(CLIENT);
    const std::string round = "shown, no error\n";
    EXPECT_EQ(runClient("threads").out, round + round + round + round + round);
    mEnvironment["LOADER_TRACE"] = "yes";
    const support::Outcome late = runClient("late");
    EXPECT_THAT(late.out, HasSubstr("damage of 0 rectangles\n")) << late.err;
    EXPECT_THAT(late.out, HasSubstr("\nshown\n"));
}

/// By the companion of applications, which is in the layer.
TEST_F(GlesLayer, DumpsAndSavesPicturesAsAPropertySays) {
    const std::string folder = mRuntime.path() + "/dumps";
    mEnvironment["KORDANIX_DUMP_DIR"] = folder;
    switchOn("es2gears_x11", {"devmode", "true"});
    setenv("KORDANIX_RUNTIME_DIR", mRuntime.path().c_str(), 1);
    const ChildProcess program({"es2gears_x11"}, mEnvironment);
    int number = 0;
    for (const auto& each : {std::pair(" dump", ".csv"), std::pair(" picture", ".pam")}) {
        EXPECT_TRUE(support::waitUntil([&] {
            // What was there before the program listened does nothing.
            const std::string command = std::to_string(++number) + each.first;
            EXPECT_EQ(platform::setProperty("debug.kordanix.command", command.c_str()), "");
            usleep(300'000);
            const Command find = {"find", folder, "-name", std::string("*") + each.second, "-size", "+0"};
            return !support::run(find).out.empty();
        })) << each.first;
    }
}

TEST_F(GlesLayer, LeavesTheProgramsStateAsItWas) {
    switchOn(CLIENT);
    const support::Outcome outcome = runClient("state");
    EXPECT_EQ(outcome.out, "shown\n") << outcome.err;
}

TEST_F(GlesLayer, PassesContextsOfOpenGlEs1Through) {
    switchOn(CLIENT);
    const support::Outcome outcome = runClient("es1");
    EXPECT_EQ(outcome.out, "0 values changed, error 0\n") << outcome.err;
    EXPECT_THAT(outcome.err, HasSubstr("its context is of OpenGL ES 1"));
}

TEST_F(GlesLayer, TheStandInFindsWhateverBreaksTheLoadersRules) {
    const struct {
        const char* rule;
        const char* way;
        int status;
        const char* complaint;
    } rules[] = {
        {"public", "late", -SIGABRT, "loader: a layer called a function of EGL while it was loaded"},
        {"unknown", "late", -SIGABRT, "loader: a layer asked for a name that the platform does not know"},
        {"waits", "late", -SIGABRT, "loader: a layer waits for itself"},
        {"null", "late", -SIGABRT, "loader: a layer has no function for a name"},
        {"handle", "late", -SIGABRT, "loader: a layer passed a handle on"},
        {"missing", "toolkit", 0, "loader: called unimplemented OpenGL ES API"},
        {"region", "toolkit", 0, "no damage region"},
    };
    mEnvironment["LOADER_LAYERS"] = RULE_BREAKER;
    mEnvironment["LOADER_ES2"] = "yes";
    for (const auto& [rule, way, status, complaint] : rules) {
        mEnvironment["BREAKS"] = rule;
        const support::Outcome outcome = runClient(way, ":");
        EXPECT_EQ(outcome.status, status) << rule;
        EXPECT_THAT(outcome.out + outcome.err, HasSubstr(complaint));
    }
}

}  // namespace
