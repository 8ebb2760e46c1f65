#include "doubles/Emulator.h"
#include "properties/PropertyWriter.h"
#include "properties/SystemProperties.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "runs/OwnRun.h"
#include "runs/RunFolder.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace platform {
namespace {

namespace fs = std::filesystem;

using support::runForked;

class RunFolderTest : public testing::Test {
protected:
    /// A run whose launcher has ended.
    std::string makeEndedRun() const {
        std::string error;
        runForked([&] { return makeRunFolder(mUser.path(), error).empty() ? 1 : 0; });
        return fs::directory_iterator(mUser.path())->path();
    }

    const support::TemporaryDirectory mUser;
    const support::TemporaryDirectory mElsewhere;
};

TEST_F(RunFolderTest, EndedRunsAreRemovedWithAllTheyHoldAndNothingElse) {
    const std::string folder = makeEndedRun();
    ASSERT_TRUE(mUser.shell("E=" + mElsewhere.path() +
                            "; touch $E/kept; cd run*; mkdir -p a/b; touch a/b/c; ln -s $E a/link; "
                            "ln -s $E/kept properties; mkfifo pipe"));
    EXPECT_TRUE(isRunOver(folder));
    EXPECT_TRUE(removeEndedRun(folder));
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_TRUE(fs::exists(mElsewhere.path("kept")));
}

TEST_F(RunFolderTest, NothingIsRemovedWithoutEvidence) {
    const std::string folder = makeEndedRun();
    ASSERT_TRUE(mUser.shell("mv run*/run marker"));
    for (const char* const spoil :
         {":", "tr -c x x <../marker >run", "(cat ../marker; echo x) >run", "ln -s ../marker run",
          "mkfifo run", "mkdir run", "mkdir run; cp ../marker run"}) {
        ASSERT_TRUE(mUser.shell("cd run*; rm -rf run; " + std::string(spoil)));
        EXPECT_FALSE(isRunFolder(folder) || removeEndedRun(folder)) << spoil;
        EXPECT_TRUE(fs::exists(folder)) << spoil;
    }
    ASSERT_TRUE(mUser.shell("mv run* run-3; rm -r run-3/run; cp marker run-3/run; ln -s run-3 " + folder));
    EXPECT_FALSE(removeEndedRun(mUser.path("run-3"))) << "another name";
    EXPECT_FALSE(removeEndedRun(folder)) << "a link to a run's folder";
    EXPECT_TRUE(fs::exists(mUser.path("run-3/run")));
}

TEST_F(RunFolderTest, EveryHolderKeepsIt) {
    const std::string folder = makeEndedRun();
    RunHold first;
    RunHold second;
    first.take(folder);
    second.take(folder);
    EXPECT_TRUE(isRunHeld(folder) && !removeEndedRun(folder));
    first.forget();
    EXPECT_FALSE(isRunOver(folder) || removeEndedRun(folder));
    second.forget();
    EXPECT_FALSE(isRunHeld(folder));
    EXPECT_TRUE(removeEndedRun(folder));
}

TEST_F(RunFolderTest, AsLongAsItsLauncherRunsNobodyElseRemovesIt) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU tells a process that it started at no time";
    }
    std::string error;
    const std::string folder = makeRunFolder(mUser.path(), error);
    ASSERT_EQ(error, "");
    EXPECT_EQ(runProcess(folder), getpid());
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
    EXPECT_EQ(runForked([&] { return removeEndedRun(folder) ? 1 : 0; }), 0);
    EXPECT_TRUE(removeEndedRun(folder)) << "its own at its end";
    EXPECT_EQ(makeRunFolder("/tmp/" + std::string(80, 'x'), error), "");
    EXPECT_THAT(error, testing::HasSubstr("too long"));
}

class OverlayClaimTest : public testing::Test {
protected:
    OverlayClaimTest() { changeRuntimeDirectory(mRun.path()); }

    std::string value(const char* name) const { return PropertyWriter(mRun.path()).value(name); }
    /// What another process gets.
    static Claim claimElsewhere() {
        return static_cast<Claim>(runForked([] { return static_cast<int>(claimOverlay("other", 1)); }));
    }

    const support::TemporaryDirectory mRun;
};

TEST_F(OverlayClaimTest, TheFirstProcessHasItUntilItEnds) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU tells a process that it started at no time";
    }
    EXPECT_EQ(claimOverlay("first", 7), Claim::NONE);
    ASSERT_EQ(openOverlayClaim(mRun.path()), "");
    EXPECT_EQ(overlayClaimant(mRun.path()), std::nullopt);
    EXPECT_EQ(claimElsewhere(), Claim::OWN);
    EXPECT_EQ(value("debug.kordanix.proc"), "other");
    {
        const PropertyLock lock(mRun.path(), std::chrono::seconds(0));
        EXPECT_EQ(claimOverlay("first", 7), Claim::BUSY);
    }
    // The one that had it has ended; and then this process runs another program, with a long name.
    const std::string longName(4000, 'n');
    for (const auto& [name, generation] : {std::pair(std::string("first"), "2"), {longName, "3"}}) {
        EXPECT_EQ(claimOverlay(name, 7), Claim::OWN);
        EXPECT_EQ(claimOverlay(name, 7), Claim::OWN);
        EXPECT_EQ(claimElsewhere(), Claim::FOREIGN);
        EXPECT_EQ(claimOverlay(name, 1), Claim::OTHER_API);
        EXPECT_EQ(overlayClaimant(mRun.path()), getpid());
        EXPECT_EQ(value("debug.kordanix.proc"), name);
        EXPECT_EQ(value("debug.kordanix.api"), "7");
        EXPECT_EQ(value("debug.kordanix.settingsgeneration"), generation) << "nothing new is not published";
    }
}

TEST_F(OverlayClaimTest, IsNotTakenFromAProcessThatMayLive) {
    ASSERT_EQ(openOverlayClaim(mRun.path()), "");
    ASSERT_EQ(claimElsewhere(), Claim::OWN);
    const std::string ended = value(CLAIM_PROPERTY);
    const std::string here = value("kordanix.run.namespace");
    const std::string reused = std::to_string(getppid()) + " 1";
    const std::tuple<std::string, std::string, Claim> claims[] = {
        {ended, "pid:[1]", Claim::FOREIGN}, {"1 x", here, Claim::FOREIGN}, {"-1 5", here, Claim::FOREIGN},
        {reused, here, Claim::OWN},         {ended, here, Claim::OWN},
    };
    for (const auto& [claim, place, expected] : claims) {
        ASSERT_EQ(setProperties({{CLAIM_PROPERTY, claim}, {"kordanix.run.namespace", place}}), "");
        EXPECT_EQ(claimOverlay("first", 0), expected) << claim << " in " << place;
    }
}

TEST_F(OverlayClaimTest, ANamedProcessWritesItsApiOnce) {
    ASSERT_EQ(openOverlayClaim(mRun.path(), true), "");
    ASSERT_EQ(setProperties({{"debug.kordanix.proc", "first"}}), "");
    EXPECT_EQ(claimElsewhere(), Claim::NONE);
    EXPECT_EQ(value("debug.kordanix.api"), "") << "another name";
    EXPECT_EQ(claimOverlay("first", 0), Claim::NONE);
    EXPECT_EQ(value("debug.kordanix.api"), "0");
    ASSERT_EQ(setProperties({{"debug.kordanix.api", "1"}}), "");
    EXPECT_EQ(claimOverlay("first", 0), Claim::NONE);
    EXPECT_EQ(value("debug.kordanix.api"), "1") << "what the user sets later stays";
}

TEST(OwnRunTest, IsBegunOnceWithItsOwnProperties) {
    if (doubles::isEmulated()) {
        GTEST_SKIP() << "QEMU tells a process that it started at no time";
    }
    const support::TemporaryDirectory directory;
    changeRuntimeDirectory(directory.path());
    EXPECT_TRUE(canBeginOwnRun());
    const std::string folder = beginOwnRun({{"debug.kordanix.scale", " 1.2"}});
    std::string error;
    EXPECT_EQ(folder, *ownRuntimeDirectory(error));
    EXPECT_FALSE(canBeginOwnRun());
    EXPECT_EQ(beginOwnRun({}), "");
    EXPECT_EQ(fs::path(folder).parent_path(), directory.path());
    EXPECT_TRUE(isRunFolder(folder));
    EXPECT_EQ(PropertyWriter(folder).value("debug.kordanix.scale"), " 1.2");
    EXPECT_THAT(support::readFile(folder + INITIAL_PROPERTIES), testing::HasSubstr("scale \\x201.2\n"));
    EXPECT_EQ(claimOverlay("program", 1), Claim::OWN);
}

TEST(OverlayNoteTest, AreReadBackAndRubbishIsPassedOver) {
    const support::TemporaryDirectory directory;
    changeRuntimeDirectory(directory.path());
    const OverlayNote note = {getpid(), " a\nname\\ ", -7, true, 1ULL << 63, "its state\nkeeps it away", 7};
    writeOverlayNote({getpid(), "first", 0, false, 0, ""});
    writeOverlayNote(note);
    writeOverlayNote({getpid(), "of another API that is not shown", 1, false, 9, ""});
    ASSERT_TRUE(directory.shell(R"(
        N='kordanix note 2\nname a\n' R='api 0\nshown 1\nframes 5\nreason '
        touch note.1; printf "$N$R\\\\" >note.2; printf "${N}api 99999999999\nshown 1\nframes 5\nreason \nown 0\n" >note.3
        printf "${N}api 0\nshown 2\nframes 5\nreason \nown 0\n" >note.4; printf "$N$R\\\\q\nown 0\n" >note.5
        printf "$N$R\nown 0\nmore\n" >note.6; truncate -s 1M note.7
        printf "$N$R\nown 0\n" | tee note.-8 >note.; mkfifo note.9)"));
    const std::vector<OverlayNote> notes = readOverlayNotes(directory.path());
    ASSERT_EQ(notes.size(), 1U);
    const OverlayNote& read = notes.front();
    EXPECT_EQ(std::tie(read.process, read.name, read.api, read.wasShown, read.frames, read.reason),
              std::tie(note.process, note.name, note.api, note.wasShown, note.frames, note.reason));
    // Whoever comes next in the user's own folder takes the notes of those away that have ended.
    for (int i = 0; i < 2; ++i) {
        runForked([] { return writeOverlayNote({}), 0; });
        EXPECT_EQ(readOverlayNotes(directory.path()).size(), 2U);
    }
}

}  // namespace
}  // namespace platform
