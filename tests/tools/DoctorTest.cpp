#include "doctor/Doctor.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeProperties.h"
#include "processes/ProcessInfo.h"
#include "properties/PropertyWriter.h"
#include "properties/RuntimeDirectory.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "runs/RunFolder.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace control {
namespace {

using doubles::setFile;
using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class DoctorTest : public testing::Test {
protected:
    DoctorTest() {
        doubles::removeAllFiles();
        platform::changeRuntimeDirectory(mDirectory.path());
    }

    std::string report(ExitCode expected = SUCCESS) {
        std::ostringstream out;
        EXPECT_EQ(runDoctor(out, mErr), expected);
        return out.str();
    }

    const support::TemporaryDirectory mDirectory;
    std::ostringstream mErr;
};

// First, because the library finds out the clock's unit once per process.
TEST_F(DoctorTest, SaysWhatIsMissingOrMalformedAndWhatToDo) {
    setFile("/sys/kernel/gpu/gpu_clock", "300\n");
    setFile("/sys/kernel/gpu/gpu_mem_total", std::string("\0\1text", 6));
    EXPECT_THAT(report(), AllOf(HasSubstr("Expected a number of bytes"),
                                ContainsRegex("gpu_busy +N/A: No such file or directory\n"),
                                HasSubstr("a simulated device has them all"),
                                ContainsRegex("gpu_clock +N/A: its unit is unknown\n"),
                                HasSubstr("N/A: begins with \"??text\"")));
}

TEST_F(DoctorTest, ShowsTheFiguresOfADevice) {
    setFile("/sys/kernel/gpu/gpu_model", "mali-g78\n");
    setFile("/sys/kernel/gpu/gpu_freq_table", "100000 585000\n");
    setFile("/sys/kernel/gpu/gpu_clock", "300000\n");
    setFile("/sys/kernel/gpu/gpu_mem_texture", "1048576\n");
    const std::string output = report();
    for (const char* const line : {"gpu_model +Mali\n", "gpu_clock +300 MHz\n", "gpu_freq_table +585MHz\n",
                                   "gpu_mem_texture +1.0MB\n"}) {
        EXPECT_THAT(output, ContainsRegex(line));
    }
    EXPECT_THAT(output, HasSubstr("Runtime directory: " + mDirectory.path()));
}

TEST_F(DoctorTest, SaysWhichPropertiesAreSetAndWhichTextsCannotBeRead) {
    EXPECT_THAT(report(), AllOf(HasSubstr("'kordanixctl list'):\n  none\n"), HasSubstr("is switched off")));
    doubles::setProperty("debug.kordanix.status", "true");
    doubles::setProperty("debug.kordanix.bg_color", "0xFF");
    EXPECT_THAT(report(),
                AllOf(HasSubstr("  status = true\n"), Not(HasSubstr("switched off")),
                      HasSubstr("bg_color = #000000   its text \"0xFF\" cannot be read; expected")));
}

TEST_F(DoctorTest, SaysWhoShowsTheOverlayAndWhyNot) {
    const std::string name = processName(getpid());
    doubles::setProperty("debug.kordanix.status", "true");
    doubles::setProperty("debug.kordanix.proc", name);
    const std::string line = "  " + std::to_string(getpid()) + ' ' + name + ": ";
    const std::pair<platform::OverlayNote, const char*> cases[] = {
        {{0, name, 3, false, 9, ""}, "api is set to 0, but its graphics API has number 3\n"},
        {{0, name, 0, true, 9, ""}, "shows the overlay\n"},
        {{0, name, 0, true, 9, "", 187500}, "shows the overlay, which takes 187 us of a frame\n"},
        {{0, name, 0, false, 1, ""}, "has not shown the overlay yet\n"},
        {{0, name, 0, true, 9, "its window is too small"},
         "does not show the overlay: its window is too small\n"},
        {{0, "other", 0, false, 9, ""}, "is for '"}};
    for (const auto& [note, text] : cases) {
        platform::writeOverlayNote(note);
        EXPECT_THAT(report(), AllOf(HasSubstr(note.name == name ? line : ""), HasSubstr(text)));
    }
}

TEST_F(DoctorTest, SaysWhoCameLaterInARun) {
    std::string error;
    const std::string run = platform::makeRunFolder(mDirectory.path(), error);
    ASSERT_EQ(error, "");
    {
        platform::PropertyWriter writer(run);
        writer.set(platform::CLAIM_PROPERTY, "4194303 1");
        ASSERT_EQ(writer.commit(), "");
    }
    doubles::setProperty("debug.kordanix.status", "true");
    platform::changeRuntimeDirectory(run);
    platform::writeOverlayNote({0, "late", 0, false, 1, ""});
    const std::string me = std::to_string(getpid());
    EXPECT_THAT(report(), HasSubstr(me + " late: does not show the overlay; process 4194303 presented"));
    platform::changeRuntimeDirectory(mDirectory.path());
    EXPECT_THAT(report(), HasSubstr("    " + me + " late: came later, so that it has no overlay\n"));
}

TEST_F(DoctorTest, FailsOnlyWithoutAUsableRuntimeDirectory) {
    std::ofstream(mDirectory.path("properties")) << "not an area";
    setFile("/sys/kernel/gpu/gpu_busy", "7\n");
    EXPECT_THAT(report(FAILURE), HasSubstr("What the GPU's driver tells"));
    EXPECT_THAT(mErr.str(), HasSubstr("there are no properties: "));
}

}  // namespace
}  // namespace control
