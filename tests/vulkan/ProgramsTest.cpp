#include "opengl/context/VirtualDisplay.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <fstream>

namespace {

using software::Image;

std::map<std::string, std::string> environment() {
    return {{"DISPLAY", VirtualDisplay::get().name()},
            {"VK_ICD_FILENAMES", LAVAPIPE},
            {"XDG_CONFIG_HOME", "/nowhere"}};
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
    EXPECT_THAT(outcome.out, testing::HasSubstr("shown 1"));
    EXPECT_THAT(outcome.out + outcome.err, testing::Not(testing::ContainsRegex("VUID|SYNC-|Validation ")));
    // Inserted from the driver up: ours comes last, nearest to the program.
    const std::size_t validation = outcome.err.find("Inserted device layer \"VK_LAYER_KHRONOS_validation\"");
    const std::size_t ours = outcome.err.rfind("Inserted device layer \"VK_LAYER_KORDANIX_overlay\"");
    ASSERT_NE(validation, std::string::npos) << outcome.err;
    ASSERT_NE(ours, std::string::npos) << outcome.err;
    EXPECT_LT(validation, ours);
}

INSTANTIATE_TEST_SUITE_P(Each, UnderValidation,
                         testing::Values("vkcube --c 90", "vkcube --c 90 --present_mode 0",
                                         "vkcube --c 90 --present_mode 1", "'" CLIENT "' passes 40",
                                         "'" CLIENT "' present 40 resize 300 200 present 40 renew present 40",
                                         "for i in 1 2 3 4 5 6 7 8; do '" CLIENT
                                         "' random $i || exit 1; done"));

/// What the largest window shows of a program that presents one picture for long.
std::optional<Image> pictureOf(std::vector<std::string> command) {
    command.insert(command.end(), {CLIENT, "present", "1000000"});
    const support::ChildProcess program(command, environment());
    return VirtualDisplay::get().windowPicture(false);
}

TEST(VulkanPrograms, TheOverlayIsInThePictureAndNothingElseHasChanged) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    const std::optional<Image> picture = pictureOf({KORDANIXCTL, "run", "--"});
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->mWidth, 500U);
    std::size_t changed = 0;
    const auto background = picture->row(0)[0];
    for (std::size_t y = 0; y < picture->mHeight; ++y) {
        for (std::size_t x = 0; x < picture->mWidth; ++x) {
            changed += picture->row(y)[x] == background ? 0 : 1;
        }
    }
    const std::size_t all = std::size_t{picture->mWidth} * picture->mHeight;
    EXPECT_GT(changed, all / 20);
    EXPECT_LT(changed, all / 2);
}

TEST(VulkanPrograms, ACaptureHasEveryPassThatWasRecordedInItsFrame) {
    ASSERT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
    const support::TemporaryDirectory folder;
    auto variables = environment();
    variables["KORDANIX_DUMP_DIR"] = folder.path();
    variables["CTL"] = KORDANIXCTL;
    const auto outcome = support::run(
        {KORDANIXCTL, "run", "--set", "devmode=true", "sh", "-c",
         "'" CLIENT "' passes 100000 & sleep 1; \"$CTL\" key dump; \"$CTL\" key capture; sleep 1.5; "
         "\"$CTL\" key dump; sleep 0.3; kill $!; wait"},
        variables);
    const auto passes = support::run({"sh", "-c", "cat '" + folder.path() + "'/*/passes.csv"});
    // The pass's number, microseconds and width; the command buffer that was recorded before has none.
    std::string expected;
    for (const char* const pass :
         {",0,[0-9]+,256,", ",1,[0-9]+,256,", ",2,[0-9]+,100,", ",3,[0-9]+,101,", ",4,[0-9]+,102,"}) {
        expected += std::string("[^\n]*") + pass + "[^\n]*\n";
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
    variables["CTL"] = KORDANIXCTL;
    ASSERT_TRUE(home.shell("mkdir kordanix; printf 'scale 1.5\\nscal 1\\n' >kordanix/vulkan_client.conf"));
    const auto outcome = support::run(
        {"sh", "-c",
         "'" CLIENT
         "' present 100000 & for i in $(seq 100); do \"$CTL\" --process $! get scale | grep 1.5 && break; "
         "sleep 0.1; done; kill $!"},
        variables);
    EXPECT_EQ(outcome.out, "1.5\n");
    EXPECT_THAT(outcome.err, testing::HasSubstr(
                                 "vulkan_client.conf:2: there is no property 'scal'; did you mean 'scale'?"));
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
