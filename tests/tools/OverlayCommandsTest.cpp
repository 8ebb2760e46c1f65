#include <gmock/gmock.h>
#include <ostra/Ostra.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <thread>

#include "PictureCommand.h"
#include "ProcessCommands.h"
#include "ProcessInfo.h"
#include "SetCommand.h"
#include "ostra/PictureRequest.h"
#include "platform/TemporaryDirectory.h"
#include "properties/RuntimeDirectory.h"
#include "runs/OverlayNote.h"
#include "software/Image.h"
#include "software/Png.h"
#include "support/ChildProcess.h"

namespace control {
namespace {

using testing::AllOf;
using testing::HasSubstr;

/// This process is the one with the overlay. It listens from the first test on.
class OverlayCommandsTest : public testing::Test {
protected:
    OverlayCommandsTest() {
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

    /// Does what a layer does in its frames for as long as the command runs.
    ExitCode whilePresenting(const std::function<void()>& present, const std::function<ExitCode()>& command) {
        mOut.str({});
        mErr.str({});
        std::atomic<bool> hasEnded{false};
        std::thread presenter([&] {
            while (!hasEnded) {
                present();
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
        const ExitCode result = command();
        hasEnded = true;
        presenter.join();
        return result;
    }

    /// Presents nothing.
    ExitCode picture(const std::string& path, std::optional<pid_t> process = std::nullopt) {
        mErr.str({});
        return savePicture(process, path, 0.02, mErr);
    }

    static inline std::atomic<bool> mIsInBackground{false};
    const platform::TemporaryDirectory mFolder;
    std::ostringstream mOut;
    std::ostringstream mErr;
};

/// One of noise, so that it is large also when it is compressed.
void writePicture() {
    if (const auto path = platform::takePictureRequest()) {
        std::ofstream file(*path + ".part");
        file << "P7\nWIDTH 32\nHEIGHT 32\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
        std::minstd_rand noise;
        for (int i = 0; i < 32 * 32 * 4; ++i) {
            file.put(static_cast<char>(noise() >> 8U));
        }
        file.close();
        std::rename((*path + ".part").c_str(), path->c_str());
    }
}

TEST_F(OverlayCommandsTest, APictureIsTheNextFrame) {
    const std::string path = mFolder.path("frame.PNG");
    const std::string file = platform::picturePath(platform::openRuntimeDirectory().path, getpid());
    std::ofstream(file).flush();  // as a kordanixctl that was killed leaves it
    EXPECT_EQ(whilePresenting(writePicture, [&] { return savePicture(getpid(), path, 20.0, mErr); }), SUCCESS)
        << mErr.str();
    software::Image image;
    std::string error;
    ASSERT_TRUE(software::readPng(path, image, error)) << error;
    EXPECT_EQ(image.mWidth, 32U);
    EXPECT_FALSE(std::filesystem::exists(file));

    // A limit on files ends with a word, not with a signal.
    const std::string limited = mFolder.path("limited.png");
    EXPECT_EQ(whilePresenting(writePicture,
                              [&] {
                                  const auto run = support::run(
                                      {"sh", "-c", "ulimit -f 1; exec " KORDANIXCTL " picture " + limited});
                                  mErr << run.err;
                                  return static_cast<ExitCode>(run.status);
                              }),
              FAILURE);
    EXPECT_THAT(mErr.str(), HasSubstr("cannot write " + limited));
}

TEST_F(OverlayCommandsTest, APictureThatCannotBeHadIsExplained) {
    const std::string path = mFolder.path("frame.png");
    struct Case {
        std::function<void()> prepare;
        const char* error;
    };
    const Case cases[] = {
        {[] {}, "presented no frame in 0.02 seconds; it may draw only when something changes"},
        {[] { setNote("its window is too small"); }, "does not show the overlay: its window is too small"},
        {[&] {
             set({"api", "7"});
         },
         "api is set to 7, but its graphics API has number 0"},
        {[&] {
             set({"proc", "other"});
         },
         "does not show the overlay, which is for 'other'"},
        {[&] {
             set({"status", "false"});
         },
         "switched off"}};
    for (const Case& each : cases) {
        each.prepare();
        EXPECT_EQ(picture(path), FAILURE);
        EXPECT_THAT(mErr.str(), HasSubstr(each.error));
        EXPECT_FALSE(std::filesystem::exists(path));
    }
    EXPECT_EQ(picture(mFolder.path("a.jpg")), USAGE_ERROR);
    EXPECT_THAT(mErr.str(), HasSubstr("must end in .png"));
    support::ChildProcess stopped([] { return pause(); });
    stopped.kill(SIGSTOP);
    ASSERT_TRUE(support::waitUntil([&] { return isStopped(stopped.id()); }));
    EXPECT_EQ(picture(path, stopped.id()), FAILURE);
    EXPECT_THAT(mErr.str(), HasSubstr("is stopped"));
}

}  // namespace
}  // namespace control
