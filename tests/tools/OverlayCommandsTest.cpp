#include "RunFixture.h"
#include "ostra/DumpNotice.h"
#include "overlays/Pam.h"
#include "overlays/PictureCommand.h"
#include "overlays/ProcessCommands.h"
#include "processes/ProcessInfo.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"
#include "runs/OverlayNote.h"
#include "software/Image.h"

#include <gmock/gmock.h>
#include <ostra/Ostra.h>

#include <atomic>
#include <csignal>

namespace control {
namespace {

using testing::HasSubstr;
using testing::Not;

/// This process is the one with the overlay. It listens from the first test on.
class OverlayCommandsTest : public RunFixture {
protected:
    OverlayCommandsTest() {
        static const support::TemporaryDirectory runtime;
        platform::changeRuntimeDirectory(runtime.path());
        platform::removeDumpNotice(runtime.path(), getpid());
        EXPECT_EQ(resetProperties(false, mErr), SUCCESS);
        EXPECT_EQ(set({"status", "true", "proc", processName(getpid()), "devmode", "true"}), SUCCESS);
        [[maybe_unused]] static const bool isListening = [] {
            Ostra::registerAppBecomeBackgroundListener([] { mIsInBackground = true; });
            return true;
        }();
        setNote({});
    }

    ExitCode set(const std::vector<std::string>& words) { return setProperties(words, {}, mErr); }

    static void setNote(const std::string& reason) {
        platform::writeOverlayNote({getpid(), processName(getpid()), 0, true, 1, reason});
    }

    /// Presents nothing. Returns the error.
    std::string picture(const std::string& path, std::optional<pid_t> process = std::nullopt) {
        mErr.str({});
        EXPECT_NE(savePicture(process, path, 0.02, mOut, mErr), SUCCESS);
        EXPECT_FALSE(std::filesystem::exists(path));
        return mErr.str();
    }

    std::string press(Key key) {
        mErr.str({});
        EXPECT_EQ(pressKey(key, std::nullopt, mOut, mErr), FAILURE);
        return mErr.str();
    }

    static inline std::atomic<bool> mIsInBackground{false};
    std::ostringstream mOut;
    std::ostringstream mErr;
};

TEST(Pam, OnlyAWholePictureIsRead) {
    const std::string whole =
        "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nabcdefgh";
    software::Image image;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        EXPECT_FALSE(parsePam(whole.substr(0, i), image)) << i;
    }
    for (const char* const side : {"0", "-2", "32769", "99999999999", "1"}) {
        EXPECT_FALSE(parsePam(std::string(whole).replace(9, 1, side), image)) << side;
    }
    EXPECT_FALSE(parsePam(whole + 'i', image));
    EXPECT_TRUE(parsePam(whole, image));
}

TEST_F(OverlayCommandsTest, APictureThatCannotBeHadIsExplained) {
    const std::string path = mHome.path("frame.png");
    EXPECT_THAT(picture(path), HasSubstr("presented no frame in 0.02 seconds; it may draw only when"));
    setNote("its window is too small");
    EXPECT_THAT(picture(path), HasSubstr("does not show the overlay: its window is too small"));
    const std::tuple<const char*, const char*, const char*> settings[] = {
        {"api", "7", "api is set to 7, but its graphics API has number 0"},
        {"proc", "other", "does not show the overlay, which is for 'other'"},
        {"status", "false", "switched off"}};
    for (const auto& [name, value, error] : settings) {
        set({name, value});
        EXPECT_THAT(picture(path), HasSubstr(error));
    }
    EXPECT_THAT(picture(mHome.path("a.jpg")), HasSubstr("must end in .png"));
    support::ChildProcess stopped([] { return pause(); });
    stopped.kill(SIGSTOP);
    ASSERT_TRUE(support::waitUntil([&] { return isStopped(stopped.id()); }));
    EXPECT_THAT(picture(path, stopped.id()), HasSubstr("is stopped"));
}

TEST_F(OverlayCommandsTest, KeysThatDoNothingAreExplained) {
    EXPECT_THAT(press(Key::DUMP), HasSubstr("has presented no frame since"));
    Ostra::receiveKeyEvents();
    setNote("its window is too small");
    EXPECT_THAT(press(Key::DUMP), HasSubstr("does not show the overlay: its window is too small"));
    set({"proc", ""});
    EXPECT_THAT(press(Key::DUMP), Not(HasSubstr("which is for ''")));
    setNote({});
    set({"devmode", "false", "proc", processName(getpid())});
    EXPECT_THAT(press(Key::CAPTURE), HasSubstr("developer mode"));
    EXPECT_EQ(Ostra::receiveKeyEvents().size(), 0U);
}

TEST_F(OverlayCommandsTest, TheNoticeReachesOverlaysThatListen) {
    EXPECT_EQ(sendToBackground(2000000000, mOut, mErr), FAILURE);
    EXPECT_THAT(mErr.str(), HasSubstr("does not listen"));
    EXPECT_EQ(sendToBackground(std::nullopt, mOut, mErr), SUCCESS);
    EXPECT_TRUE(support::waitUntil([] { return mIsInBackground.load(); }));
}

}  // namespace
}  // namespace control
