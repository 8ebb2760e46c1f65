#include "core/HWcounterAdreno.h"
#include "core/StateInfo.h"
#include "doubles/Emulator.h"
#include "doubles/FakeFiles.h"
#include "doubles/FakeLog.h"
#include "doubles/FakeOstra.h"
#include "utils/StringFormat.h"
#include "utils/SystemInfoHelper.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>

// What the library learns once per process (clock unit, vendor, device model) is fresh in each case when
// every case has a process of its own, as CTest runs them.

namespace {

using core::StateInfo;

constexpr const char* GPU_BUSY = "/sys/kernel/gpu/gpu_busy";
constexpr const char* GPU_CLOCK = "/sys/kernel/gpu/gpu_clock";
constexpr const char* GPU_TABLE = "/sys/kernel/gpu/gpu_freq_table";
constexpr const char* GPU_TEMPERATURE = "/sys/kernel/gpu/gpu_tmu";
constexpr const char* GPU_MODEL = "/sys/kernel/gpu/gpu_model";

/// What has been logged since the last time: tag, priority and text of each line.
std::string logged() {
    std::string all;
    for (const doubles::LogLine& line : doubles::takeLog()) {
        all += line.tag + std::to_string(line.priority) + " " + line.text + "\n";
    }
    return all;
}

class SystemMetrics : public testing::Test {
protected:
    ~SystemMetrics() override { EXPECT_EQ(doubles::openFiles(), 0) << "a reader left its file open"; }
};

TEST_F(SystemMetrics, SayMinusOneWithoutTheirFile) {
    doubles::removeAllFiles();
    StateInfo state;
    for (const float figure :
         {StateInfo::getCPUTemperature(), StateInfo::getGPUUsage(), StateInfo::getGPUClock(),
          StateInfo::getGPUMaxClock(), StateInfo::getGPUTemperature(), state.getCurrentCPUUsage(120000.0)}) {
        EXPECT_EQ(figure, -1.0F);
    }
    EXPECT_EQ(StateInfo::getMemoryUsage(), 0xFFFFFFFFU);
    EXPECT_EQ(doubles::timesOpened(GPU_CLOCK), 0U) << "unknown unit: the clock is not even opened";
    // The library's own source of counters has access to none, whatever is asked of it.
    core::HWcounter counter;
    unsigned long long time = 5;
    double usage = 5.0;
    EXPECT_FALSE(counter.readGpuActivity(&time, &usage, &usage, &usage));
    EXPECT_TRUE(time == 5 && usage == 5.0) << "nothing is written";
    EXPECT_FALSE(counter.readGpuUsage(&usage) || counter.getCpuGpuTimeDiff(&time) ||
                 counter.getRealtimeMonotonictimeDiff(&time));
    EXPECT_TRUE(counter.init() == 3 && time == 0 && usage == 0.0);
}

TEST_F(SystemMetrics, ReadOneNumberAfresh) {
    doubles::setFile("/sys/class/thermal/thermal_zone0/temp", "45000\n");
    doubles::setFile(GPU_TEMPERATURE, "523\n");
    EXPECT_FLOAT_EQ(StateInfo::getCPUTemperature(), 45.0F);
    const float expected[] = {523.0F, 52.3F, 523.0F};
    for (StateInfo::mVendor = 0; StateInfo::mVendor < 3; ++StateInfo::mVendor) {
        EXPECT_FLOAT_EQ(StateInfo::getGPUTemperature(), expected[StateInfo::mVendor]);
    }
    for (const unsigned busy : {37U, 8U}) {
        doubles::setFile(GPU_BUSY, std::to_string(busy));
        EXPECT_FLOAT_EQ(StateInfo::getGPUUsage(), static_cast<float>(busy));
    }
}

TEST_F(SystemMetrics, AreTheSameInEveryLocale) {
    setenv("LOCPATH", LOCALES, 1);
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    doubles::setFile(GPU_TEMPERATURE, "52.5\n");
    EXPECT_EQ(StateInfo::getGPUTemperature(), 52.5F);
    EXPECT_EQ(utils::strFormat("%.1fms", 16.7), "16.7ms");
    EXPECT_STREQ(std::localeconv()->decimal_point, ",") << "the application's locale is as it was";
    std::setlocale(LC_ALL, "C");
}

struct ClockCase {
    const char *table, *clock;
    float maximum, current;
};

class GpuClock : public testing::TestWithParam<ClockCase> {};

TEST_P(GpuClock, FollowsTheUnitOfTheFrequencyTable) {
    doubles::setFile(GPU_TABLE, GetParam().table);
    doubles::setFile(GPU_CLOCK, GetParam().clock);
    EXPECT_FLOAT_EQ(StateInfo::getGPUClock(), GetParam().current);
    doubles::removeFile(GPU_TABLE);
    EXPECT_TRUE(StateInfo::checkGPUClockUnit()) << "the table is read once per process";
    EXPECT_FLOAT_EQ(StateInfo::getGPUMaxClock(), GetParam().maximum);
}

INSTANTIATE_TEST_SUITE_P(Tables, GpuClock,
                         testing::Values(ClockCase{"100000 585000 200000", "300000\n", 585.0F, 300.0F},
                                         ClockCase{"10000", "9000", 10000.0F, 9000.0F},
                                         ClockCase{"10001", "9000", 10.001F, 9.0F},
                                         ClockCase{"338 MHz 598", "338", 338.0F, 338.0F}));

TEST_F(SystemMetrics, TheGpusMakerIsRememberedWhenItIsFound) {
    doubles::removeAllFiles();
    for (const auto& [model, vendor] : {std::pair("Adreno (TM) 650", 2), {"Mali", 1}, {"", 1}}) {
        logged();
        StateInfo state;
        EXPECT_EQ(StateInfo::mVendor, vendor);
        EXPECT_EQ(logged(),
                  vendor == 2 ? "Kordanix6 SystemInfoHelper.h:checkVendor(66) Fail to read Vendor\n" : "");
        doubles::setFile(GPU_MODEL, model);
    }
}

TEST_F(SystemMetrics, CpuLoadIsTheTicksSinceThePreviousReading) {
    const struct {
        unsigned user, system;
        double elapsed;
        float load;
    } readings[] = {
        {100, 50, 500000.0, -1.0F},                             // nothing to compare with
        {102, 51, 500000.0, 0.6F},    {0, 0, 500000.0, -1.0F},  // no file, which keeps the previous reading
        {104, 52, 500000.0, 0.6F},    {105, 52, 0.0, 0.0F},    {106, 52, -1.0, 0.0F},
        {4294967295U, 1, -1.0, 0.0F}, {2, 1, 100000.0, 3.0F},  // unsigned 32-bit arithmetic
    };
    StateInfo state;
    for (const auto& [user, system, elapsed, load] : readings) {
        doubles::setFile("/proc/self/stat", "1234 (app) S 1 2 3 4 5 6 7 8 9 10 " + std::to_string(user) +
                                                " " + std::to_string(system) + " 0 0 20 0\n");
        if (user == 0) {
            doubles::removeFile("/proc/self/stat");
        }
        EXPECT_FLOAT_EQ(state.getCurrentCPUUsage(elapsed), load) << user;
    }
}

TEST_F(SystemMetrics, MemoryInUseLeavesOutFreeAndCached) {
    for (const unsigned total : {3826404U, 10U}) {  // unsigned 32-bit arithmetic
        doubles::setFile("/proc/meminfo",
                         "MemTotal:     " + std::to_string(total) +
                             " kB\nMemFree:          104720 kB\nMemAvailable:    1563184 kB\n"
                             "Buffers:           12400 kB\nCached:          1500000 kB\nSwapCached: 4 kB\n");
        EXPECT_EQ(StateInfo::getMemoryUsage(), total - 104720U - 1500000U);
    }
}

TEST_F(SystemMetrics, ProcessNameIsTheFirstArgumentTrimmed) {
    const std::pair<std::string, std::string> cases[] = {
        {std::string(" \t com.example.app \n\0--flag", 28), "com.example.app"},
        {std::string("one\0two", 7), "one"},
        {" \t ", ""},
        {std::string(300, 'a'), std::string(255, 'a')},
        {"a\xe4 b", "a\xe4 b"},
    };
    for (const auto& [commandLine, name] : cases) {
        doubles::setFile("/proc/self/cmdline", commandLine);
        EXPECT_EQ(utils::getProcessName(), name);
    }
    doubles::removeFile("/proc/self/cmdline");
    logged();
    EXPECT_EQ(utils::getProcessName(), "");
    EXPECT_EQ(logged(),
              "Kordanix6 SystemInfoHelper.h:getProcessName(47) Faield to open /proc/self/cmdline,  error: No "
              "such file or directory\n");
}

TEST_F(SystemMetrics, FixedClocksComeFromTheTable) {
    const struct {
        int device, vendor;
        bool isKHz;
        unsigned long long cpu, gpu;
    } cases[] = {{0, 0, true, 1170000, 338000}, {7, 0, false, 1687587, 377}, {8, 1, true, 1747200, 441600000},
                 {9, 0, false, 0, 0},           {2, 2, false, 0, 0},         {-1, 0, false, 0, 0}};
    doubles::setFile(GPU_TABLE, "338 598");
    ASSERT_TRUE(StateInfo::checkGPUClockUnit());
    for (const auto& c : cases) {
        utils::deviceModel = c.device;
        StateInfo::mVendor = c.vendor;
        StateInfo::mIsGpuClockKHz = c.isKHz;
        StateInfo::fixClock();
        EXPECT_EQ(doubles::companion().clockRequests.back(), std::make_pair(c.cpu, c.gpu)) << &c - cases;
    }
    EXPECT_EQ(doubles::companion().clockRequests.size(), std::size(cases)) << "sent even when both are 0";
}

// The device index is computed while the library is loaded, so each property text needs a process of its own:
// this executable again, whose exit code is the index.
TEST(DeviceModelChild, DISABLED_exitsWithTheIndex) {
    std::_Exit(utils::deviceModel);
}

TEST(DeviceModel, IsTheFirstMatchingPrefix) {
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    const std::pair<const char*, int> models[] = {{"QV-A31", 0}, {"QV-B32 LTE", 3}, {"QV-B3", 9}};
    for (const auto& [model, index] : models) {
        const std::string command =
            "KORDANIX_TEST_MODEL='" + std::string(model) + "' " + doubles::emulator() + self +
            " --gtest_also_run_disabled_tests --gtest_filter='DeviceModelChild.*' >/dev/null";
        const int status = std::system(command.c_str());  // NOLINT(cert-env33-c): the shell sets the variable
        EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, index) << "'" << model << "'";
    }
}

}  // namespace
