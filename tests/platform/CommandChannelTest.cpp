#include "ostra/DumpNotice.h"
#include "ostra/PictureRequest.h"
#include "ostra/android/CommandChannel.h"
#include "ostra/android/FilesFolder.h"
#include "platform/OstraTesting.h"
#include "properties/SystemProperties.h"
#include "support/ChildProcess.h"

#include <android/log.h>
#include <gmock/gmock.h>
#include <ostra/Ostra.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>
#include <tuple>

namespace ostra {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

void command(const char* text) {
    ASSERT_EQ(platform::setProperty(platform::COMMAND_PROPERTY, text), "");
}

/// Writes it again and again, so that the channel sees at least one of the writes before the next command.
void insist(const char* text) {
    for (int i = 0; i < 50; ++i) {
        command(text);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// The keys that were pressed until this one arrives.
std::vector<int> keysUntil(int last) {
    std::vector<int> codes;
    EXPECT_TRUE(support::waitUntil([&] {
        for (const Ostra::KeyEvent& event : Ostra::receiveKeyEvents()) {
            codes.push_back(event.action == 1 ? event.keyCode : -1);
        }
        return !codes.empty() && codes.back() == last;
    }));
    return codes;
}

/// Waits for a warning in the log.
std::string warning() {
    std::vector<std::string> texts;
    support::waitUntil([&] { return !(texts = logged(ANDROID_LOG_WARN)).empty(); });
    return texts.empty() ? std::string() : texts.front();
}

TEST(Commands, TheFolderIsTheApplicationsOwn) {
    const std::tuple<uid_t, std::string, std::string> cases[] = {
        {10123, std::string("com.example.game\0", 17), "/data/user/0/com.example.game/files/kordanix"},
        {1010123, "com.example.game:render", "/data/user/10/com.example.game/files/kordanix"},
        {10123, "", "files/kordanix"},
        {10123, "../x", "files/kordanix"}};
    for (const auto& [user, line, folder] : cases) {
        EXPECT_EQ(platform::filesFolder(user, line), folder);
    }
}

TEST(Commands, OnlyWhatIsWrittenTheRightWayIsRead) {
    EXPECT_EQ(platform::parseCommand("12345678901234567890 picture").value().number, "12345678901234567890");
    for (const char* const text : {"", "1", "1 ", "dump", " dump", "-1 dump", "1  dump", "1 dump ", "1 Dump",
                                   "123456789012345678901 dump", "../1 picture"}) {
        EXPECT_FALSE(platform::parseCommand(text)) << text;
    }
}

TEST(Commands, EachNewNumberActsAndTheOneFoundAtStartDoesNot) {
    const std::string folder = runtimeDirectory() + "/data/files/kordanix";
    setenv("KORDANIX_DUMP_DIR", folder.c_str(), 1);
    command("7 capture");
    Ostra::registerAppBecomeBackgroundListener(nullptr);
    EXPECT_THAT(Ostra::receiveKeyEvents(), testing::IsEmpty());
    insist("7 capture");
    command("8 frobnicate");
    EXPECT_THAT(warning(), HasSubstr("it says: 8 frobnicate"));
    command("8 dump");
    EXPECT_THAT(keysUntil(24), ElementsAre(24));
    EXPECT_THAT(warning(), HasSubstr("'8 dump' does nothing outside developer mode"));
    platform::setProperty("debug.kordanix.devmode", "true");
    insist("8 dump");
    command("9 capture");
    EXPECT_THAT(keysUntil(25), ElementsAre(25));
    EXPECT_THAT(logged(ANDROID_LOG_WARN), testing::IsEmpty());

    EXPECT_EQ(platform::takePictureRequest(), std::nullopt);
    command("10 picture");
    std::optional<std::string> path;
    EXPECT_TRUE(support::waitUntil([&] { return (path = platform::takePictureRequest()).has_value(); }));
    EXPECT_EQ(path, folder + "/picture-10.pam");
    struct stat status = {};
    EXPECT_EQ(stat(path->c_str(), &status), 0);
    EXPECT_EQ(status.st_size, 0);
    EXPECT_EQ(status.st_mode & ACCESSPERMS, 0600U);
    EXPECT_EQ(platform::takePictureRequest(), std::nullopt);

    Ostra::startDumping({});
    Ostra::finishDumping();
    EXPECT_EQ(platform::readDumpNotice(folder, getpid()).value().folder.substr(0, folder.size()), folder);
}

}  // namespace
}  // namespace ostra
