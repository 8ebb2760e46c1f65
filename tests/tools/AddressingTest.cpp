#include "processes/Addressing.h"
#include "processes/RunDirectories.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SetCommand.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "runs/RunFolder.h"
#include "settings/Properties.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <csignal>

namespace control {
namespace {

using support::ChildProcess;
using testing::HasSubstr;

class AddressingTest : public testing::Test {
protected:
    AddressingTest() {
        setenv("XDG_RUNTIME_DIR", mHome.path().c_str(), 1);
        platform::changeRuntimeDirectory(mUser);
        EXPECT_EQ(platform::openRuntimeDirectory().error, "");
        EXPECT_TRUE(mHome.shell("mkdir kordanix/run-3-20260101")) << "a folder of the user's own";
    }

    /// A run whose launcher has ended.
    std::string makeEndedRun(const char* start) const {
        std::string error;
        const std::string folder = platform::makeRunFolder(mUser, error);
        const std::string ended = folder.substr(0, folder.rfind('-')) + start;
        std::filesystem::rename(folder, ended);
        return ended;
    }

    enum class Way { CLAIM, NOTE };

    /// A process that says in this way that it is in a run.
    std::unique_ptr<ChildProcess> makeMember(const std::string& run, Way way) const {
        auto member = std::make_unique<ChildProcess>([&] {
            static platform::RunHold hold;
            hold.take(run);
            platform::changeRuntimeDirectory(run);
            if (way == Way::CLAIM) {
                platform::openOverlayClaim(run);
                platform::claimOverlay("name", 0);
            } else {
                platform::writeOverlayNote({});
            }
            mHome.shell("touch joined");
            return pause();
        });
        EXPECT_TRUE(support::waitUntil([this] { return std::filesystem::remove(mHome.path("joined")); }));
        return member;
    }

    /// The runtime directory that is meant by a process, or without one by KORDANIX_RUNTIME_DIR as given.
    std::string choose(std::optional<pid_t> process, const std::string& variable) {
        platform::changeRuntimeDirectory(variable);
        std::ostringstream err;
        const ExitCode result = chooseRuntimeDirectory(process, err);
        EXPECT_EQ(result, err.str().empty() ? SUCCESS : FAILURE);
        return result == SUCCESS ? platform::runtimeDirectoryPath() : err.str();
    }

    const support::TemporaryDirectory mHome;
    const std::string mUser = mHome.path("kordanix");
};

TEST_F(AddressingTest, WhoIsInARunIsFoundByWhatItSaysOfItself) {
    const std::string first = makeEndedRun("-1");
    const std::string second = makeEndedRun("-2");
    EXPECT_EQ(choose(std::nullopt, ""), mUser) << "nobody is in either";
    const ChildProcess heir({"sleep", "60"}, {{"KORDANIX_RUNTIME_DIR", first}});
    ASSERT_TRUE(support::waitUntil([&] { return findRuns(mUser).size() == 1; }));
    EXPECT_EQ(choose(std::nullopt, ""), first);
    EXPECT_EQ(choose(heir.id(), ""), first);
    {
        const auto claimant = makeMember(first, Way::CLAIM);
        const auto noted = makeMember(second, Way::NOTE);
        EXPECT_EQ(choose(claimant->id(), ""), first);
        EXPECT_EQ(choose(noted->id(), ""), second);
        const std::string several = choose(std::nullopt, "");
        for (const auto& shown : {claimant->id(), noted->id()}) {
            EXPECT_THAT(several, HasSubstr("\n  " + std::to_string(shown) + ' '));
        }
        EXPECT_EQ(choose(std::nullopt, mUser), mUser);
        EXPECT_EQ(choose(getpid(), ""), mUser);
    }
    EXPECT_EQ(choose(std::nullopt, ""), first) << "what the program started goes on";
    EXPECT_TRUE(std::filesystem::exists(second)) << "whoever reads removes nothing";
}

TEST_F(AddressingTest, NobodyIsInAnEndedRun) {
    for (const std::string& folder : {makeEndedRun("-1"), mUser + "/run-7-7"}) {
        EXPECT_THAT(choose(std::nullopt, folder), HasSubstr("has ended"));
    }
    EXPECT_FALSE(std::filesystem::exists(mUser + "/run-7-7"));
    EXPECT_THAT(choose(4194304, ""), HasSubstr("there is no process 4194304"));
}

TEST_F(AddressingTest, ResetReturnsToTheClaim) {
    ASSERT_EQ(platform::openOverlayClaim(mUser), "");
    ASSERT_EQ(platform::claimOverlay("name", 1), platform::Claim::OWN);
    std::ostringstream err;
    EXPECT_EQ(setProperties({"proc", "other", "api", "0", "widget_fps", "off"}, {}, err), SUCCESS);
    EXPECT_EQ(resetProperties(false, err), SUCCESS) << err.str();
    EXPECT_EQ(readProperty("debug.kordanix.proc"), "name");
    EXPECT_EQ(readProperty("debug.kordanix.api"), "1");
    EXPECT_EQ(readProperty("debug.kordanix.widget_fps"), std::nullopt);
    EXPECT_EQ(platform::overlayClaimant(mUser), getpid());
}

}  // namespace
}  // namespace control
