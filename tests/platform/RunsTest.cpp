#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <fstream>
#include <tuple>

#include "doubles/Emulator.h"
#include "io/ProcessStart.h"
#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "properties/PropertyWriter.h"
#include "properties/SystemProperties.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "runs/RunFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class RunFolderTest : public testing::Test {
protected:
    /// A run whose launcher has ended.
    std::string makeEndedRun() const {
        waitForChild(startChild([&] {
            std::string error;
            return makeRunFolder(mUser.path(), error).empty() ? 1 : 0;
        }));
        for (const auto& entry : fs::directory_iterator(mUser.path())) {
            if (isRunFolder(entry.path())) {
                return entry.path();
            }
        }
        return {};
    }

    const TemporaryDirectory mUser;
    const TemporaryDirectory mElsewhere;
};

TEST_F(RunFolderTest, EndedRunsAreRemovedWithAllTheyHoldAndNothingElse) {
    const std::string folder = makeEndedRun();
    ASSERT_NE(folder, "");
    std::ofstream(mElsewhere.path("kept")) << "x";
    fs::create_directories(folder + "/dump/inner");
    std::ofstream(folder + "/dump/inner/frames.csv") << "x";
    fs::create_directory_symlink(mElsewhere.path(), folder + "/dump/link");
    fs::create_symlink(mElsewhere.path("kept"), folder + "/properties");
    ASSERT_EQ(mkfifo((folder + "/pipe").c_str(), 0600), 0);
    EXPECT_TRUE(isRunOver(folder));
    EXPECT_TRUE(removeEndedRun(folder));
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_TRUE(fs::exists(mElsewhere.path("kept")));
}

TEST_F(RunFolderTest, NothingIsRemovedWithoutEvidence) {
    const std::string folder = makeEndedRun();
    const std::string marker = folder + '/' + RUN_MARKER;
    const std::string aside = mElsewhere.path("marker");
    fs::copy_file(marker, aside);
    const std::pair<const char*, std::function<void()>> spoils[] = {
        {"no marker", [] {}},
        {"a file of somebody else's",
         [&] { std::ofstream(marker) << std::string(static_cast<std::size_t>(fs::file_size(aside)), 'x'); }},
        {"a marker that is longer", [&] { std::ofstream(marker) << std::ifstream(aside).rdbuf() << 'x'; }},
        {"a link to a marker", [&] { fs::create_symlink(aside, marker); }},
        {"a pipe", [&] { mkfifo(marker.c_str(), 0600); }},
        {"a folder", [&] { fs::create_directory(marker); }},
    };
    for (const auto& [what, spoil] : spoils) {
        fs::remove_all(marker);
        spoil();
        EXPECT_FALSE(isRunFolder(folder) || removeEndedRun(folder)) << what;
        EXPECT_TRUE(fs::exists(folder)) << what;
    }
    fs::remove_all(marker);
    fs::copy_file(aside, marker);
    fs::rename(folder, mElsewhere.path("run-3"));
    EXPECT_FALSE(removeEndedRun(mElsewhere.path("run-3"))) << "another name";
    fs::create_directory_symlink(mElsewhere.path("run-3"), folder);
    EXPECT_FALSE(removeEndedRun(folder)) << "a link to a run's folder";
    EXPECT_TRUE(fs::exists(aside) && fs::exists(mElsewhere.path("run-3") + "/run"));
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
    // The program closes what it does not know, and gets the number for a file of its own.
    const int own = open("/dev/null", O_RDONLY | O_CLOEXEC);
    for (int number = 3; number < 64; ++number) {
        if (number != own) {
            dup2(own, number);
        }
    }
    EXPECT_FALSE(isRunHeld(folder));
    second.renew();
    EXPECT_FALSE(removeEndedRun(folder));
    second.forget();
    for (int number = 3; number < 64; ++number) {
        EXPECT_EQ(close(number), 0) << "the program's own file was closed";
    }
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
    struct stat status = {};
    EXPECT_EQ(stat(folder.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700U);
    EXPECT_EQ(waitForChild(startChild([&] { return removeEndedRun(folder) ? 1 : 0; })), 0);
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
        return static_cast<Claim>(
            waitForChild(startChild([] { return static_cast<int>(claimOverlay("other", 1)); })));
    }

    const TemporaryDirectory mRun;
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
    EXPECT_EQ(claimOverlay("first", 7), Claim::OWN) << "the one that had it has ended";
    EXPECT_EQ(claimElsewhere(), Claim::FOREIGN);
    EXPECT_EQ(overlayClaimant(mRun.path()), getpid());
    EXPECT_EQ(value("debug.kordanix.proc"), "first");
    EXPECT_EQ(value("debug.kordanix.api"), "7");
    EXPECT_EQ(value("debug.kordanix.settingsgeneration"), "2");
    // Another program in the same process.
    const std::string longName(4000, 'n');
    EXPECT_EQ(claimOverlay(longName, 7), Claim::OWN);
    EXPECT_EQ(claimOverlay(longName, 7), Claim::OWN);
    EXPECT_EQ(value("debug.kordanix.proc"), longName);
    EXPECT_EQ(value("debug.kordanix.settingsgeneration"), "3") << "nothing new is nothing to publish";
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

TEST(OverlayNoteTest, AreReadBackAndRubbishIsPassedOver) {
    const TemporaryDirectory directory;
    changeRuntimeDirectory(directory.path());
    const OverlayNote note = {getpid(), " a\nname\\ ", -7, true, 1ULL << 63, "its state\nkeeps it away"};
    writeOverlayNote({getpid(), "first", 0, false, 0, ""});
    writeOverlayNote(note);
    const std::pair<const char*, std::string> rubbish[] = {
        {"note.1", ""},
        {"note.2", "kordanix note 1\nname a\napi 0\nshown 1\nframes 5\nreason \\"},
        {"note.3", "kordanix note 1\nname a\napi 99999999999\nshown 1\nframes 5\nreason \n"},
        {"note.4", "kordanix note 1\nname a\napi 0\nshown 2\nframes 5\nreason \n"},
        {"note.5", "kordanix note 1\nname a\napi 0\nshown 1\nframes 5\nreason \\q\n"},
        {"note.6", "kordanix note 1\nname a\napi 0\nshown 1\nframes 5\nreason \nmore\n"},
        {"note.7", std::string(1000000, 'x')},
        {"note.-8", "x"},
        {"note.", "x"},
    };
    for (const auto& [name, text] : rubbish) {
        std::ofstream(directory.path(name)) << text;
    }
    ASSERT_EQ(mkfifo(directory.path("note.9").c_str(), 0600), 0);
    const std::vector<OverlayNote> notes = readOverlayNotes(directory.path());
    ASSERT_EQ(notes.size(), 1U);
    const auto fields = [](const OverlayNote& each) {
        return std::tie(each.process, each.name, each.api, each.wasShown, each.frames, each.reason);
    };
    EXPECT_EQ(fields(notes.front()), fields(note));
    // Whoever comes next in the user's own folder takes the notes of those away that have ended.
    EXPECT_EQ(waitForChild(startChild([] { return writeOverlayNote({}), 0; })), 0);
    EXPECT_EQ(readOverlayNotes(directory.path()).size(), 2U);
    EXPECT_EQ(waitForChild(startChild([] { return writeOverlayNote({}), 0; })), 0);
    EXPECT_EQ(readOverlayNotes(directory.path()).size(), 2U);
}

}  // namespace
}  // namespace platform
