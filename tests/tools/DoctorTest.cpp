#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "Doctor.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeProperties.h"
#include "platform/TemporaryDirectory.h"

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
        setenv("KORDANIX_RUNTIME_DIR", mDirectory.path().c_str(), 1);
    }

    std::string report(ExitCode expected = SUCCESS) {
        std::ostringstream out;
        EXPECT_EQ(runDoctor(out, mErr), expected);
        return out.str();
    }

    const platform::TemporaryDirectory mDirectory;
    std::ostringstream mErr;
};

// First, because the library finds out the clock's unit once per process.
TEST_F(DoctorTest, SaysWhatIsMissingOrMalformedAndWhatToDo) {
    setFile("/sys/class/thermal/thermal_zone0/temp", "hot\n");
    setFile("/sys/kernel/gpu/gpu_clock", "300\n");
    setFile("/proc/meminfo", std::string("\0\1text", 6));
    EXPECT_THAT(report(), AllOf(ContainsRegex("temp +N/A: begins with \"hot\"\n"),
                                HasSubstr("Expected thousandths of a degree"),
                                ContainsRegex("gpu_busy +N/A: No such file or directory\n"),
                                HasSubstr("a simulated device has them all"),
                                ContainsRegex("gpu_clock +N/A: its unit is unknown\n"),
                                HasSubstr("N/A: begins with \"??text\"")));
}

TEST_F(DoctorTest, ShowsTheFiguresOfADeviceThatHasThemAll) {
    setFile("/proc/self/stat", "1 (app) R 1 1 1 0 -1 0 1 0 0 0 250 50 0 0\n");
    setFile("/proc/meminfo",
            "MemTotal: 4096 kB\nMemFree: 1024 kB\nMemAvailable: 2048 kB\nBuffers: 0 kB\nCached: 1024 kB\n");
    setFile("/proc/self/smaps_rollup", "0-1 ---p 0 0:0 0 [rollup]\nRss: 9 kB\nPss: 1536 kB\n");
    setFile("/sys/class/thermal/thermal_zone0/temp", "45000\n");
    const char* const gpuFiles[][2] = {{"model", "mali-g78"},
                                       {"busy", "37"},
                                       {"freq_table", "100000 585000"},
                                       {"clock", "300000"},
                                       {"tmu", "52"},
                                       {"mem_total", "1048576"},
                                       {"mem_surface", "1048576"},
                                       {"mem_texture", "1048576"}};
    for (const auto& [name, text] : gpuFiles) {
        setFile(std::string("/sys/kernel/gpu/gpu_") + name, std::string(text) + '\n');
    }
    const std::string output = report();
    for (const char* const line :
         {"/proc/self/stat +readable\n", "temp +45.0 degrees Celsius\n", "gpu_model +Mali\n",
          "gpu_busy +37 %\n", "gpu_freq_table +up to 585 MHz, counted in kHz\n", "gpu_clock +300 MHz\n",
          "gpu_tmu +52.0 degrees", "in use +/proc/meminfo +2.0 MiB\n",
          "free memory +/proc/meminfo +2.0 MiB\n", "smaps_rollup +1.5 MiB\n", "gpu_mem_texture +1.0 MiB\n"}) {
        EXPECT_THAT(output, ContainsRegex(line));
    }
    EXPECT_THAT(output, AllOf(Not(HasSubstr("N/A")), Not(HasSubstr("What to do")),
                              HasSubstr("Runtime directory: " + mDirectory.path())));
}

TEST_F(DoctorTest, SaysWhichPropertiesAreSetAndWhichTextsCannotBeRead) {
    EXPECT_THAT(report(), AllOf(HasSubstr("'kordanixctl list'):\n  none\n"), HasSubstr("is switched off")));
    doubles::setProperty("debug.kordanix.status", "true");
    doubles::setProperty("debug.kordanix.bg_color", "0xFF");
    EXPECT_THAT(report(),
                AllOf(HasSubstr("  status = true\n"), Not(HasSubstr("switched off")),
                      HasSubstr("bg_color = #000000   its text \"0xFF\" cannot be read; expected")));
}

TEST_F(DoctorTest, FailsOnlyWithoutAUsableRuntimeDirectory) {
    std::ofstream(mDirectory.path("properties")) << "not an area";
    EXPECT_THAT(report(FAILURE), HasSubstr("What can be measured here"));
    EXPECT_THAT(mErr.str(), HasSubstr("there are no properties: "));
}

}  // namespace
}  // namespace control
