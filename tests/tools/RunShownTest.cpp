#include "RunFixture.h"
#include "opengl/context/VirtualDisplay.h"
#include "ostra/PictureRequest.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "software/Png.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>

namespace control {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

class RunShown : public RunFixture {
protected:
    RunShown() {
        VirtualDisplay::get();
        setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
        setenv("CLIENT", PLAIN_CLIENT, 1);
    }
};

TEST_F(RunShown, WhoeverPresentsFirstShowsItAndElseItIsSaidWhyNot) {
    std::ofstream(mHome.path("script")) << "#!/bin/sh\n$CLIENT \"$@\"\nexit 4\n";
    const struct {
        std::string command;
        int status;
        std::string reason;  ///< empty when the overlay is shown
    } cases[] = {
        {"$CLIENT", 0, ""},
        {"$CLIENT window=glx frames=1", 0, ""},
        {"sh -c '$CLIENT api=gl; exit 3'", 3, ""},
        {"env A=1 nice sh ./script api=core", 4, ""},
        {"sh -c '$CLIENT frames=20 & $CLIENT; wait'", 0, ""},
        {"--set proc=$CLIENT --set api=0 $CLIENT", 0, ""},
        {"--set proc=another $CLIENT", 0, "another process is selected"},
        {"--set status=off $CLIENT", 0, "switched off"},
        {"$CLIENT surface=pbuffer", 0, "plain_client: it swaps a pbuffer"},
        {"$CLIENT api=gl state=query frames=1", 0, "a query"},
        {"$CLIENT frames=0", 0, "no swap came"},
        {"env -i /bin/sh -c 'exit 2'", 2, "no frame of OpenGL"},
        {STATIC_PROGRAM, 0, "is statically linked"},
    };
    for (const auto& [command, status, reason] : cases) {
        const support::Outcome outcome = run("$CTL run " + command);
        EXPECT_EQ(outcome.status, status) << command;
        EXPECT_THAT(outcome.err,
                    reason.empty() ? testing::Matcher<std::string>(IsEmpty()) : HasSubstr(reason))
            << command;
        EXPECT_LE(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    }
}

#ifdef PROGRAM32
TEST_F(RunShown, ProgramsOfBothWordSizesHaveIt) {
    const std::string told = run("$CTL doctor | grep '^32-bit programs'").out;
    if (told.find("have the overlay") == std::string::npos) {
        GTEST_SKIP() << told << "cmake --preset linux32 && cmake --build --preset linux32";
    }
    setenv("PROGRAM32", PROGRAM32, 1);
    std::vector<std::array<const char*, 2>> cases = {
        {"$PROGRAM32", "program32: its EGL or GLX lacks functions"},
        {"sh -c '$PROGRAM32; $CLIENT; exit 3'", ""},
        {"$PROGRAM32 sh -c '$CLIENT; exit 3'", ""},
    };
    if (run("command -v glxgears.i386-linux-gnu").status == 0) {
        cases.push_back(
            {"sh -c 'glxgears.i386-linux-gnu & sleep 1; $CTL picture $! p.png && s=3; kill $!; exit $s'",
             ""});
    }
    for (const auto& [command, reason] : cases) {
        const support::Outcome outcome = run(std::string("$CTL run ") + command);
        EXPECT_EQ(outcome.status, 3) << command;
        EXPECT_THAT(outcome.err, reason[0] == '\0'
                                     ? testing::Matcher<std::string>(testing::Not(HasSubstr("not shown")))
                                     : HasSubstr(reason))
            << command;
        EXPECT_THAT(outcome.err, testing::Not(HasSubstr("ld.so"))) << command;
    }
}
#endif

// Of programs that nobody here wrote: positive, and seldom more than the frame that it belongs to.
TEST_F(RunShown, ADumpHasTheGpusTimeOfEachFrame) {
    std::ofstream(mHome.path("count.awk"))
        << "NR == 1 { for (i = 1; i <= NF; ++i) { at[$i] = i } }\n"
           "NR > 1 { gpu = $at[\"GpuTime(us)\"]; frame = $at[\"FrameTime(us)\"] }\n"
           "NR > 1 && gpu != \"\" { ++known; odd += gpu <= 0 || gpu > 2 * frame }\n"
           "END { print (known > 10 && 2 * known > NR), (odd * 5 < known) }\n";
    for (const char* const program : {"glxgears", "glmark2-es2 -b build -s 320x240", "vkcube"}) {
        const support::Outcome outcome = run(
            std::string("rm -rf dumps; KORDANIX_DUMP_DIR=$PWD/dumps $CTL run --set devmode=true sh -c '") +
            program +
            " >/dev/null & sleep 1.5; $CTL key dump; sleep 0.7; $CTL key dump; sleep 0.3; kill $!; wait' "
            ">/dev/null; awk -F, -f count.awk dumps/*/frames.csv");
        EXPECT_EQ(outcome.out, "1 1\n") << program << ": " << outcome.err;
    }
}

// Of programs that nobody here wrote, which end only because the log is over.
TEST_F(RunShown, ALogOfARealProgramIsWrittenSummarizedAndJudged) {
    setenv("XDG_DATA_HOME", mHome.path("data").c_str(), 1);
    const struct {
        std::string command;
        int status;
        std::string verdict;
    } cases[] = {
        {"--log-for 1 --fail-if 'frames<5' glxgears", 0, ""},
        {"--log out --log-after 0.3 --log-for 0.7 --fail-if 'frames>1' --fail-if 'low1>1e6' -- vkcube", 1,
         "frames>1: it is "},
        {"--log-for 1 --fail-if 'longest<1e6' sh -c 'glxgears; exit 5'", 1, "longest<1e6: it is "},
        {"--log $CLIENT frames=60", 0, "the overlay took"},
        {"--log-after 60 --fail-if 'low1<1' $CLIENT frames=3", 1,
         "no frame was logged, so that no condition"},
        {"--fail-if 'low<5' $CLIENT frames=3", 2, "no condition; expected"},
    };
    for (const auto& [command, status, verdict] : cases) {
        const support::Outcome outcome = run("exec timeout 60 $CTL run " + command);
        EXPECT_EQ(outcome.status, status) << command << outcome.err;
        EXPECT_THAT(outcome.err, HasSubstr(verdict)) << command;
        EXPECT_THAT(outcome.err, testing::Not(HasSubstr("low1>1e6"))) << "which did not hold";
    }
    const support::Outcome logs =
        run("for f in data/kordanix/logs/glx*.csv out/*.csv; do awk -F, 'NR > 1 { whole += $3; bad += !($3 > "
            "0) || "
            "!($4 >= 0) || $4 > $3 || !($6 > 0); gpu += $5 != \"\"; fps += $7 != \"\" } "
            "END { print (NR > 5), bad, (whole < 1200), (2 * gpu > NR), (fps > 0) }' $f; done");
    EXPECT_EQ(logs.out, "1 0 1 1 1\n1 0 1 1 1\n1 0 1 1 1\n") << logs.err;
}

TEST_F(RunShown, ALogIsStartedAndStoppedWhileAProgramRuns) {
    const support::Outcome outcome =
        run("export XDG_DATA_HOME=$PWD/data; $CTL run glxgears >/dev/null & sleep 1.5; $CTL log start; $CTL "
            "log start; "
            "sleep 0.5; $CTL log; $CTL log stop; $CTL log --last 1; $CTL toggle; sleep 1.3; $CTL log --last "
            "1; kill "
            "$!; wait");
    EXPECT_THAT(outcome.out, testing::ContainsRegex("Logging process .*\nLogged process .*\n  frames .*"));
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("is being logged already"), HasSubstr("is not being logged")));
    const support::Outcome files =
        run("ls data/kordanix/logs; $CTL compare data/kordanix/logs data/kordanix/logs");
    EXPECT_THAT(files.out, testing::ContainsRegex("glxgears-[0-9]+-[0-9]+-last.csv"));
    EXPECT_THAT(files.out, HasSubstr("no difference beyond noise"));
    const support::Outcome hidden = run(
        "awk -F, 'NR > 1 { bad += !($3 > 0) || !($4 >= 0) || $6 != \"\" || $7 != \"\" } END { print (NR > "
        "5), bad }' $(ls -t data/kordanix/logs/*last* | head -1)");
    EXPECT_EQ(hidden.out, "1 0\n") << "frames without the overlay, and without its figures";
}

TEST_F(RunShown, TheSecondProcessOfARunIsKnown) {
    support::ChildProcess program(
        {KORDANIXCTL, "run", "sh", "-c", "$CLIENT pause=20 frames=500 & $CLIENT pause=20 frames=500; wait"});
    std::vector<platform::OverlayNote> notes;
    std::string folder;
    EXPECT_TRUE(support::waitUntil([&] {
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(mHome.path("kordanix"), ignored)) {
            folder = entry.path();
            notes = platform::readOverlayNotes(folder);
        }
        return notes.size() == 2;
    }));
    ASSERT_EQ(notes.size(), 2U);
    const auto claimant = platform::overlayClaimant(folder);
    for (const platform::OverlayNote& note : notes) {
        EXPECT_EQ(note.wasShown, note.process == claimant) << note.reason;
        EXPECT_EQ(note.reason.empty(), note.wasShown) << note.reason;
    }
    program.kill(SIGTERM);
    EXPECT_EQ(program.wait(), -SIGTERM);
    run("kill " + std::to_string(notes[0].process) + ' ' + std::to_string(notes[1].process));
}

TEST_F(RunShown, TheProgramThatShowsItHasItsProfileAndGivesItItsName) {
    const support::Outcome outcome =
        run("mkdir -p config/kordanix; echo 'scale 1.3' >config/kordanix/plain_client.conf\n"
            "$CTL run sh -c '$CLIENT pause=10 frames=3000 & for i in $(seq 100); do [ $($CTL get scale) = "
            "1.3 ] && break; "
            "sleep 0.05; done; $CTL set widget_memory on; $CTL save; kill $!; wait'; cat config/kordanix/*");
    EXPECT_THAT(outcome.out, HasSubstr("/plain_client.conf\nscale 1.3\nwidget_memory true\n")) << outcome.err;
}

TEST_F(RunShown, APictureIsTheNextFrame) {
    const support::ChildProcess program(
        {KORDANIXCTL, "run", "sh", "-c", "echo $$; exec $CLIENT pause=10 frames=2000"});
    ASSERT_TRUE(support::waitUntil([&] { return program.output().find('\n') != std::string::npos; }));
    const std::string folder = fs::directory_iterator(mHome.path("kordanix"))->path();
    ASSERT_TRUE(support::waitUntil([&] { return !platform::readOverlayNotes(folder).empty(); }));
    const std::string request = platform::picturePath(folder, std::stoi(program.output()));
    std::ofstream(request).flush();  // as a kordanixctl that was killed leaves it
    const support::Outcome outcome = run("$CTL picture frame.PNG");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    software::Image image;
    std::string error;
    ASSERT_TRUE(software::readPng(mHome.path("frame.PNG"), image, error)) << error;
    EXPECT_TRUE(image.mWidth == 640 && image.mHeight == 480);
    EXPECT_FALSE(fs::exists(request));
    const support::Outcome limited = run("ulimit -f 1; exec $CTL picture limited.png");
    EXPECT_EQ(limited.status, 1) << "with a word, not with a signal";
    EXPECT_THAT(limited.err, HasSubstr("cannot write limited.png"));
}

}  // namespace
}  // namespace control
