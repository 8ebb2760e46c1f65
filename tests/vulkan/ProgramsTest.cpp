#include "opengl/context/VirtualDisplay.h"
#include "opengl/context/WidgetPixels.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <fstream>

namespace {

using software::Image;

std::map<std::string, std::string> environment() {
    return {{"DISPLAY", VirtualDisplay::get().name()},
            {"VK_ICD_FILENAMES", LAVAPIPE},
            {"XDG_CONFIG_HOME", "/nowhere"},
            {"CTL", KORDANIXCTL}};
}

/// Validation with synchronisation, its messages in the program's output, and the loader's list of layers.
std::map<std::string, std::string> underValidation() {
    std::ofstream("vk_layer_settings.txt")
        << "khronos_validation.enables = VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT\n"
           "khronos_validation.debug_action = VK_DBG_LAYER_ACTION_LOG_MSG\n"
           "khronos_validation.report_flags = error,warn,perf\n"
           "khronos_validation.log_filename = stdout\n";
    auto variables = environment();
    variables["VK_INSTANCE_LAYERS"] = "VK_LAYER_KHRONOS_validation";
    variables["VK_LOADER_DEBUG"] = "layer";
    return variables;
}

class UnderValidation : public testing::TestWithParam<const char*> {};

TEST_P(UnderValidation, NothingIsSaidOfTheOverlayNorOfTheProgram) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    const std::string line = std::string("'" KORDANIXCTL "' run -- sh -c '") + GetParam() +
                             "; echo; cat $KORDANIX_RUNTIME_DIR/note.*'";
    const auto outcome = support::run({"sh", "-c", line}, underValidation());
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const bool isPassedThrough = line.find("family=") != std::string::npos;
    EXPECT_THAT(outcome.out, testing::HasSubstr(isPassedThrough ? "shown 0" : "shown 1"));
    EXPECT_THAT(outcome.out + outcome.err, testing::Not(testing::ContainsRegex("VUID|SYNC-|Validation ")));
    // Inserted from the driver up: ours comes last, nearest to the program.
    const std::size_t validation = outcome.err.find("Inserted device layer \"VK_LAYER_KHRONOS_validation\"");
    const std::size_t ours = outcome.err.rfind("Inserted device layer \"VK_LAYER_KORDANIX_overlay\"");
    ASSERT_NE(validation, std::string::npos) << outcome.err;
    ASSERT_NE(ours, std::string::npos) << outcome.err;
    EXPECT_LT(validation, ours);
}

/// Frames of passes of which one is captured, and a picture taken; and a compositor's window.
#define CAPTURE                                                                                         \
    "cd $(mktemp -d); export KORDANIX_DUMP_DIR=$PWD; \"$CTL\" set devmode true; '" CLIENT               \
    "' passes 500 & sleep 1; \"$CTL\" key dump; \"$CTL\" key capture; \"$CTL\" picture a.png || exit; " \
    "wait; grep -q ,256, */passes.csv || exit; rm -r $PWD"
#define WAYLAND                                                                                          \
    "export XDG_RUNTIME_DIR=$(mktemp -d); weston --backend=headless-backend.so --socket=wl 2>/dev/null " \
    ">&2 & sleep 1; WAYLAND_DISPLAY=wl vkcube-wayland --c 60; kill $!; rm -r $XDG_RUNTIME_DIR"

#define STAND_IN "VK_ICD_FILENAMES='" STAND_IN_DRIVER "' '" CLIENT "' headless "

INSTANTIATE_TEST_SUITE_P(
    Each, UnderValidation,
    testing::Values("vkcube --c 90", "timeout -s INT 2 /usr/libexec/installed-tests/SDL2/testvulkan",
                    "vkcube --c 90 --present_mode 0", "vkcube --c 90 --present_mode 1",
                    "'" CLIENT "' passes 40 nulls", "'" CLIENT "' swapchains=2 minor=1 random 3 present 20",
                    "'" CLIENT "' present 40 resize 300 200 present 40 renew present 40 surfaces present 20",
                    STAND_IN "format=half layers=2 minor=2 random 4", STAND_IN "flight=2 format=hdr random 5",
                    STAND_IN "format=srgb swapchains=3 present 20", STAND_IN "format=ten queues=2 present 9",
                    STAND_IN "minor=0 nowait chain=regions random 6", STAND_IN "threads=3 random 7",
                    STAND_IN "swapchains=2 queues=2 apart 200", STAND_IN "family=1 flight=2 present 30",
                    STAND_IN "family=2 flight=2 present 30", CAPTURE, WAYLAND,
                    "'" CLIENT "' flight=3 present 40 resize 300 200 present 40 random 8",
                    "for i in 1 2 3 4 5 6 7 8; do '" CLIENT "' random $i || exit 1; done"));

TEST(VulkanPrograms, ACaptureHasEveryPassThatWasRecordedInItsFrame) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    const support::TemporaryDirectory folder;
    auto variables = environment();
    variables["KORDANIX_DUMP_DIR"] = folder.path();
    const auto outcome = support::run(
        {KORDANIXCTL, "run", "--set", "devmode=true", "sh", "-c",
         "'" CLIENT "' passes 100000 & sleep 1; \"$CTL\" key dump; \"$CTL\" key capture; sleep 1.5; "
         "\"$CTL\" key dump; sleep 0.3; kill $!; wait"},
        variables);
    const auto passes = support::run({"sh", "-c", "cat '" + folder.path() + "'/*/passes.csv"});
    // The pass's number, microseconds and width; the command buffer that was recorded before has none.
    std::string expected;
    for (int pass = 0; pass < 5; ++pass) {
        expected += "[^\n]*," + std::to_string(pass) + ",[0-9]+,256,[^\n]*\n";
    }
    EXPECT_THAT(passes.out, testing::MatchesRegex("Frame[^\n]*\n" + expected)) << outcome.out << outcome.err;
}

TEST(VulkanPrograms, HaveTheirProfileAlsoWithoutALauncher) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    const support::TemporaryDirectory home;
    auto variables = environment();
    variables["KORDANIX"] = "1";
    variables["XDG_CONFIG_DIRS"] = LAYER_FOLDER;
    variables["XDG_CONFIG_HOME"] = variables["XDG_RUNTIME_DIR"] = home.path();
    ASSERT_TRUE(home.shell("mkdir kordanix; printf 'scale 1.5\\nscal 1\\n' >kordanix/vulkan_client.conf"));
    const auto outcome = support::run(
        {"sh", "-c",
         "shows() { for i in $(seq 100); do \"$CTL\" --process $! get $1 | grep \"$2\" && break; sleep 0.1; "
         "done; }; '" CLIENT
         "' present 100000 & shows scale 1.5; \"$CTL\" --process $! set widget_memory on; "
         "printf 'scale 1.2\\nwidget_memory 0' >$XDG_CONFIG_HOME/kordanix/default.conf; "
         "printf widget_cpu_gpu=on >$XDG_CONFIG_HOME/kordanix/vulkan_client.conf; shows scale 1.2; "
         "shows widget_memory true; kill $!"},
        variables);
    EXPECT_EQ(outcome.out, "1.5\n1.2\ntrue\n");
    EXPECT_THAT(outcome.err, testing::HasSubstr(
                                 "vulkan_client.conf:2: there is no property 'scal'; did you mean 'scale'?"));
}

/// The client on the driver that has more than Mesa's, bare or with the overlay.
support::Outcome onStandIn(const std::string& words, const std::string& standIn, bool hasOverlay = true) {
    auto variables = environment();
    variables["VK_ICD_FILENAMES"] = STAND_IN_DRIVER;
    variables["STAND_IN"] = standIn;
    const std::string run = hasOverlay ? "'" KORDANIXCTL "' run -- " : "";
    return support::run({"sh", "-c", run + "'" CLIENT "' " + words}, variables);
}

TEST(VulkanPrograms, ArePassedThroughForAReasonThatIsTold) {
    const struct {
        const char* words;
        const char* standIn;
        const char* reason;
    } cases[] = {
        {"headless protected present 9", "", "its pictures are protected"},
        {"headless mode=1000111000 present 9", "", "it shares its picture with the screen while it draws"},
        {"headless family=1 present 9", "", "it presents on a queue that cannot draw"},
        {"headless family=2 present 9", "", "it presents on a queue that cannot draw"},
        {"headless shared present 9", "", "it was made together with other swapchains, for a display"},
        {"headless resize 300 200 present 9", "strict", "its surface does not let its images be drawn into"},
        {"headless present 9", "plain", "its surface does not let its images be drawn into"},
        {"headless chain=unknown present 9", "", "its presents carry something that is not known"},
        {"headless present 9", "refuse=1", "failed (-2)"},
        {"headless present 9", "submit=2", "vkQueueSubmit failed (-1)"},
        {"headless resize 1 1 present 9 resize 1 5 present 9", "", "one row or column"},
    };
    for (const auto& [words, standIn, reason] : cases) {
        SCOPED_TRACE(std::string(words) + ' ' + standIn);
        const support::Outcome outcome = onStandIn(words, standIn);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.out, testing::EndsWith("done\n"));
        EXPECT_THAT(outcome.err, testing::HasSubstr(reason));
    }
}

/// Of a client that submits once a present too. Buffers still grow with what the graphs and texts show.
TEST(VulkanPrograms, HaveOneSubmissionMoreAPresentAndNextToNothingMadeOnceWarm) {
    for (const bool isOn : {true, false}) {
        auto variables = environment();
        variables["VK_ICD_FILENAMES"] = STAND_IN_DRIVER;
        variables["STAND_IN"] = "count";
        const support::Outcome outcome =
            support::run({KORDANIXCTL, "run", "--set", isOn ? "status=true" : "status=false", CLIENT,
                          "headless", "present", "1000"},
                         variables);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_THAT(outcome.out,
                    testing::StartsWith(isOn ? "presents 1000, submissions 2000, most draws 3, "
                                             : "presents 1000, submissions 1000, most draws 0, "));
        EXPECT_THAT(outcome.out, testing::ContainsRegex(isOn ? "warm [0-9]?[0-9]\n" : "warm 0\n"));
    }
}

/// In the very process that did nothing before.
TEST(VulkanPrograms, ShowTheOverlayAsSoonAsItIsSwitchedOn) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    const support::Outcome outcome =
        support::run({KORDANIXCTL, "run", "--set", "status=false", "sh", "-c",
                      "cd $KORDANIX_RUNTIME_DIR; '" CLIENT
                      "' present 100000 & until grep 'shown 0' note.* >&2; do sleep .1; done; "
                      "\"$CTL\" set status true; for i in $(seq 50); do grep 'shown 1' note.* && break; "
                      "sleep .1; done; kill $!"},
                     environment());
    EXPECT_EQ(outcome.out, "shown 1\n") << outcome.err;
}

TEST(VulkanPrograms, SeeTheSameResultsAsWithoutTheOverlay) {
    for (const char* const standIn :
         {"lose=7", "outdated=7", "surfacelost=7", "suboptimal=7", "lose=1", "outdated=1"}) {
        for (const char* const words : {"headless passes 12", "headless swapchains=2 present 12"}) {
            SCOPED_TRACE(std::string(words) + ' ' + standIn);
            const support::Outcome bare = onStandIn(words, standIn, false);
            const support::Outcome overlaid = onStandIn(words, standIn);
            EXPECT_EQ(bare.status, 0) << bare.err;
            EXPECT_EQ(overlaid.status, 0) << overlaid.err;
            EXPECT_EQ(overlaid.out, bare.out);
        }
    }
}

/// A number that the environment sets; the checks of scripts/vulkan-checks.sh are longer than these.
int setting(const char* name, int usual) {
    const char* const text = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets it
    return text == nullptr ? usual : std::stoi(text);
}

/// Each call that makes something fails once, the program's own among them.
TEST(VulkanPrograms, GoOnWhateverTheOverlayIsRefused) {
    int refused = 0;
    for (int call = 1;; call += setting("EVERY_REFUSAL", 9)) {
        const support::Outcome outcome =
            onStandIn("headless present 9 resize 300 200 present 5", "refuse=" + std::to_string(call));
        const bool isProgramsOwn = outcome.err.find(" failed: -2\n") != std::string::npos;
        EXPECT_EQ(outcome.status, isProgramsOwn ? 1 : 0) << outcome.out << outcome.err;
        if (outcome.out.find("refused") == std::string::npos) {
            break;
        }
        ++refused;
    }
    EXPECT_GT(refused, 5);
}

/// A layer of a picture that the driver wrote, of a pixel's bytes the first four; empty without one.
Image readPicture(const std::string& file, std::size_t layer) {
    std::ifstream in(file, std::ios::binary);
    std::size_t width = 0, height = 0, layers = 0, format = 0, bytes = 0;
    if (!(in >> width >> height >> layers >> format >> bytes) || in.get() != '\n' || layer >= layers) {
        return {};
    }
    std::string pixels(width * height * bytes, '\0');
    in.ignore(static_cast<std::streamsize>(layer * pixels.size()));
    in.read(pixels.data(), static_cast<std::streamsize>(pixels.size()));
    Image image(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    for (std::size_t i = 0; i < image.mPixels.size(); ++i) {
        std::memcpy(&image.mPixels[i], &pixels[i * bytes], sizeof(software::Pixel));
    }
    return image;
}

/// Of the pixels in a layer of a picture that the driver wrote; -1 without one.
double shareThatIsNotBlack(const std::string& file, std::size_t layer) {
    const Image image = readPicture(file, layer);
    const auto isOther = [&](const software::Pixel& pixel) { return !(pixel == image.mPixels[0]); };
    const auto count = std::count_if(image.mPixels.begin(), image.mPixels.end(), isOther);
    return image.mPixels.empty() ? -1.0
                                 : static_cast<double>(count) / static_cast<double>(image.mPixels.size());
}

TEST(VulkanPrograms, OutsideTheWidgetsAMovingPictureIsAsWithout) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    const support::TemporaryDirectory folder;
    for (const std::string frame : {"7", "60"}) {
        SCOPED_TRACE(frame);
        std::vector<Image> pictures;
        for (const std::string run :
             {"", "'" KORDANIXCTL "' run --set bg_color=#FFFFFF --set widget_fps=true -- "}) {
            auto variables = environment();
            const std::string file = folder.path() + "/picture" + std::to_string(pictures.size());
            variables["VK_ICD_FILENAMES"] = STAND_IN_DRIVER;
            variables["STAND_IN"] = "unseen shot=" + frame + ":" + file;
            const support::Outcome outcome = support::run({"sh", "-c", run + "vkcube --c 61"}, variables);
            EXPECT_EQ(outcome.status, 0) << outcome.err;
            pictures.push_back(readPicture(file, 0));
        }
        ASSERT_FALSE(pictures[0].mPixels.empty());
        ASSERT_EQ(pictures[0].mPixels.size(), pictures[1].mPixels.size());
        const std::vector<PixelShare> shares = compareWidgets(pictures[0], pictures[1]);
        EXPECT_EQ(shares.back().differing, 0);
        EXPECT_GT(shares.back().all, 100000);
        EXPECT_GT(shares.front().differing, shares.front().all / 4);
    }
}

TEST(VulkanPrograms, HaveTheOverlayInEveryFormatAndLayerOfTheFirstSwapchain) {
    for (const std::string words : {"format=unorm", "format=rgba", "format=srgb", "format=ten", "format=hdr",
                                    "format=half layers=2", "swapchains=2 layers=2"}) {
        SCOPED_TRACE(words);
        const support::TemporaryDirectory folder;
        const std::string file = folder.path() + "/picture";
        const support::Outcome outcome = onStandIn("headless " + words + " present 30", "shot=30:" + file);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        const std::size_t layers = words.find("layers") == std::string::npos ? 1 : 2;
        for (std::size_t layer = 0; layer < layers; ++layer) {
            EXPECT_GT(shareThatIsNotBlack(file, layer), 0.002);
            EXPECT_LT(shareThatIsNotBlack(file, layer), 0.5);
        }
        EXPECT_EQ(shareThatIsNotBlack(file + '1', 0), words.find("swapchains") == 0 ? 0.0 : -1.0);
    }
}

/// OpenGL that is drawn with Vulkan, and a window of Wayland.
TEST(VulkanPrograms, HaveOneOverlayWhereverTheirPictureGoes) {
    const support::TemporaryDirectory folder;
    const struct {
        const char* command;
        const char* api;
    } cases[] = {
        {"LIBGL_ALWAYS_SOFTWARE=1 MESA_LOADER_DRIVER_OVERRIDE=zink timeout 2 glxgears", "api 0"},
        {"weston --backend=headless-backend.so --socket=wl 2>weston.log & sleep 1; "
         "WAYLAND_DISPLAY=wl vkcube-wayland --c 60; kill $!",
         "api 1"},
    };
    for (const auto& [command, api] : cases) {
        auto variables = environment();
        variables["XDG_RUNTIME_DIR"] = folder.path();
        const support::Outcome outcome = support::run(
            {KORDANIXCTL, "run", "sh", "-c", std::string(command) + "; cat $KORDANIX_RUNTIME_DIR/note.*"},
            variables);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_THAT(outcome.out, testing::HasSubstr(api + std::string("\nshown 1"))) << outcome.err;
    }
}

TEST(VulkanPrograms, AreLeftAloneWhenTheLayerIsDisabled) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    auto variables = environment();
    variables["KORDANIX_DISABLE"] = "1";
    const auto outcome = support::run({KORDANIXCTL, "run", "--", CLIENT, "present", "20"}, variables);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, testing::HasSubstr("the overlay was not shown"));
}

}  // namespace
