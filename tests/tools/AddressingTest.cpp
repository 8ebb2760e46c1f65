#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "processes/Addressing.h"
#include "processes/RunDirectories.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "runs/RunFolder.h"
#include "settings/Properties.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <sstream>

namespace control {
namespace {

namespace fs = std::filesystem;

class AddressingTest : public testing::Test {
protected:
    AddressingTest() { platform::changeRuntimeDirectory(mUser.path()); }

    /// A run whose launcher has ended.
    std::string makeEndedRun() const {
        std::string error;
        const std::string folder = platform::makeRunFolder(mUser.path(), error);
        const std::string ended = folder.substr(0, folder.rfind('-')) + "-1";
        fs::rename(folder, ended);
        return ended;
    }

    /// A process that is in a run by what `join` does, and ends with the object.
    class Member {
    public:
        explicit Member(const std::function<void()>& join) {
            int gate[2];
            EXPECT_EQ(pipe(gate), 0);
            mProcess = platform::startChild([&] {
                join();
                EXPECT_EQ(write(gate[1], "x", 1), 1);
                return pause();
            });
            char byte = 0;
            EXPECT_EQ(read(gate[0], &byte, 1), 1);
            close(gate[0]);
            close(gate[1]);
        }
        ~Member() {
            kill(mProcess, SIGKILL);
            platform::waitForChild(mProcess);
        }
        pid_t id() const { return mProcess; }

    private:
        pid_t mProcess = 0;
    };

    std::string choose(std::optional<pid_t> process) {
        std::ostringstream err;
        mResult = chooseRuntimeDirectory(process, err);
        return mResult == SUCCESS ? platform::runtimeDirectoryPath() : err.str();
    }

    const platform::TemporaryDirectory mUser;
    ExitCode mResult = SUCCESS;
};

TEST_F(AddressingTest, WhoIsInARunIsFoundByWhatItSaysOfItself) {
    const std::string run = makeEndedRun();
    const std::function<void()> ways[] = {
        [&] {
            static platform::RunHold hold;
            hold.take(run);
            platform::changeRuntimeDirectory(run);
            platform::openOverlayClaim(run);
            platform::claimOverlay("name", 0);
        },
        [&] {
            static platform::RunHold hold;
            hold.take(run);
            platform::changeRuntimeDirectory(run);
            platform::writeOverlayNote({});
        },
    };
    for (const auto& join : ways) {
        const Member member(join);
        platform::changeRuntimeDirectory(mUser.path());
        EXPECT_EQ(choose(member.id()), run);
        platform::changeRuntimeDirectory(mUser.path());
        const auto runs = findRuns(mUser.path());
        ASSERT_EQ(runs.size(), 1U);
        EXPECT_EQ(runs.front().process, member.id());
    }
    EXPECT_EQ(findRuns(mUser.path()).size(), 0U);
    EXPECT_TRUE(fs::exists(run)) << "whoever reads removes nothing";
}

TEST_F(AddressingTest, NobodyIsInAnEndedRun) {
    const std::string run = makeEndedRun();
    const std::string gone = mUser.path("run-7-7");
    for (const std::string& folder : {run, gone}) {
        platform::changeRuntimeDirectory(folder);
        EXPECT_THAT(choose(std::nullopt), testing::HasSubstr("has ended"));
        EXPECT_EQ(mResult, FAILURE);
    }
    EXPECT_FALSE(fs::exists(gone));
    platform::changeRuntimeDirectory(mUser.path());
    EXPECT_THAT(choose(4194304), testing::HasSubstr("there is no process 4194304"));
    // Before a program starts, its properties are the user's.
    EXPECT_EQ(choose(std::nullopt), mUser.path());
    EXPECT_EQ(choose(getpid()), mUser.path());
}

TEST_F(AddressingTest, ResetReturnsToTheClaim) {
    ASSERT_EQ(platform::openOverlayClaim(mUser.path()), "");
    ASSERT_EQ(platform::claimOverlay("name", 1), platform::Claim::OWN);
    std::ostringstream err;
    EXPECT_EQ(setProperties({"proc", "other", "api", "0", "widget_fps", "off"}, {}, err), SUCCESS);
    EXPECT_EQ(resetProperties(false, err), SUCCESS) << err.str();
    EXPECT_EQ(readProperty("debug.kordanix.proc"), "name");
    EXPECT_EQ(readProperty("debug.kordanix.api"), "1");
    EXPECT_EQ(readProperty("debug.kordanix.widget_fps"), std::nullopt);
    EXPECT_EQ(platform::overlayClaimant(mUser.path()), getpid());
}

TEST_F(AddressingTest, AUsersOwnFolderIsNoRun) {
    const std::string own = mUser.path("run-3-20260101");
    fs::create_directory(own);
    std::ofstream(own + "/results.txt") << "x";
    EXPECT_TRUE(findRuns(mUser.path()).empty());
    EXPECT_FALSE(platform::removeEndedRun(own));
    EXPECT_TRUE(fs::exists(own + "/results.txt"));
}

}  // namespace
}  // namespace control
