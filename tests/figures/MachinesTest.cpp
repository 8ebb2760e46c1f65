#include "figures/sources/FdInfo.h"
#include "figures/sources/MachineFigures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using sources::Id;
using sources::Reason;

/// A recorded machine, with files of it changed or added. An empty text takes a file away.
class Machine {
public:
    using Files = std::map<std::string, std::string>;

    explicit Machine(const std::string& name) {
        std::string pattern = testing::TempDir() + "machine-XXXXXX";
        mFolder = mkdtemp(pattern.data());
        if (!name.empty()) {
            fs::copy(fs::path(MACHINES) / name, mFolder, fs::copy_options::recursive);
        }
    }
    ~Machine() { fs::remove_all(mFolder); }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    void write(const Files& files) const {
        for (const auto& [path, text] : files) {
            const std::string whole = mFolder + path;
            fs::create_directories(fs::path(whole).parent_path());
            fs::remove(whole);
            if (path.find("/fd/") != std::string::npos) {
                fs::create_symlink(text, whole);
            } else if (!text.empty()) {
                std::ofstream(whole) << text;
            }
        }
    }

    /// Replaces a text within a file.
    void change(const std::string& path, const std::string& from, const std::string& to) const {
        std::ifstream file(mFolder + path);
        std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << path << " has no " << from;
        write({{path, text.replace(place, from.size(), to)}});
    }

    const std::string& folder() const { return mFolder; }

private:
    std::string mFolder;
};

constexpr double NONE = -1.0;

struct Expected {
    Id id;
    double value;  ///< or NONE
    Reason reason = Reason::NONE;
};

struct Change {
    const char* path;
    const char* from;
    const char* to;
};

/// A machine half a second apart; what changes meanwhile is made up.
struct Row {
    const char* name;
    const char* machine;
    Machine::Files added;
    std::vector<Change> changes;
    std::vector<Expected> expected;
};

constexpr const char* AMD = "/sys/bus/pci/devices/0000:03:00.0";

std::string amd(const std::string& file) {
    return std::string(AMD) + file;
}

/// The client of the 6.18 machine on another device, with its engine's time.
std::string otherClient(const std::string& device, const std::string& client, const std::string& ns) {
    return "drm-driver:\tamdgpu\ndrm-client-id:\t" + client + "\ndrm-pdev:\t" + device +
           "\ndrm-resident-vram:\t10 MiB\ndrm-engine-gfx:\t" + ns + " ns\n";
}

const std::vector<Row>& rows() {
    // clang-format off
    static const std::vector<Row> all = {
        // The two files are one client.
        {"amdgpu", "amdgpu-6.18", {}, {{"/proc/self/fdinfo/14", "48211906512", "48411906512"},
         {"/proc/self/fdinfo/15", "48211906512", "48411906512"}}, {{Id::GPU_LOAD_PROCESS, 40.0},
         {Id::GPU_LOAD_DEVICE, 63.0}, {Id::GPU_CLOCK, 1842.0}, {Id::GPU_CLOCK_MAX, 2660.0},
         {Id::GPU_TEMPERATURE, 61.0}, {Id::GPU_MEMORY_PROCESS, 1498880.0 * 1024},
         {Id::GPU_MEMORY_DEVICE, 2846887936.0}, {Id::GPU_MEMORY_TOTAL, 17163091968.0},
         {Id::GPU_POWER, 187.0}, {Id::GPU_FAN, 1321.0}}},
        {"AnApuHasBothKindsOfMemory", "amdgpu-6.18", {{amd("/hwmon/hwmon5/fan1_input"), ""},
         {amd("/hwmon/hwmon5/in1_label"), "vddnb\n"}}, {},
         {{Id::GPU_MEMORY_PROCESS, 1498880.0 * 1024 + 198.0 * 1024 * 1024},
         {Id::GPU_MEMORY_DEVICE, 2846887936.0 + 231038976.0},
         {Id::GPU_MEMORY_TOTAL, 17163091968.0 + 16703168512.0}, {Id::GPU_FAN, NONE, Reason::NO_FILE}}},
        {"ASleepingCardIsNotRead", "amdgpu-6.18", {{amd("/power/runtime_status"), "suspended\n"}}, {},
         {{Id::GPU_LOAD_DEVICE, NONE, Reason::ASLEEP}, {Id::GPU_TEMPERATURE, NONE, Reason::ASLEEP},
         {Id::GPU_CLOCK, NONE, Reason::ASLEEP}, {Id::GPU_MEMORY_DEVICE, 2846887936.0}}},
        {"OnlyOneStateOfTheClock", "amdgpu-6.18",
         {{amd("/pp_dpm_sclk"), "S: 19Mhz *\n1: 800Mhz \n2: 2100Mhz \n"},
         {amd("/hwmon/hwmon5/freq1_input"), ""}}, {}, {{Id::GPU_CLOCK, 19.0}, {Id::GPU_CLOCK_MAX, 2100.0}}},
        {"Amdgpu61", "amdgpu-6.1", {}, {{"/proc/self/fdinfo/14", "48211906512", "49211906512"}},
         {{Id::GPU_LOAD_PROCESS, 100.0}, {Id::GPU_MEMORY_PROCESS, 1498880.0 * 1024}}},
        {"Amdgpu515", "amdgpu-5.15", {}, {}, {{Id::GPU_LOAD_PROCESS, NONE, Reason::NOT_SUPPORTED},
         {Id::GPU_MEMORY_PROCESS, 1498880.0 * 1024}}},
        {"I915", "i915-6.12", {}, {{"/proc/self/fdinfo/9", "9288864723", "9388864723"},
         {"/sys/class/drm/card0/gt/gt0/rc6_residency_ms", "88123456", "88123581"}},
         {{Id::GPU_LOAD_PROCESS, 20.0}, {Id::GPU_LOAD_DEVICE, 75.0}, {Id::GPU_CLOCK, 1150.0},
         {Id::GPU_CLOCK_MAX, 1350.0}, {Id::GPU_MEMORY_PROCESS, 301120.0 * 1024}}},
        {"ACardIsNotAsWarmAsTheProcessor", "i915-6.12",
         {{"/sys/bus/pci/devices/0000:00:02.0/hwmon/hwmon3/name", "i915\n"},
         {"/sys/class/thermal/thermal_zone0/type", "x86_pkg_temp\n"},
         {"/sys/class/thermal/thermal_zone0/temp", "50000\n"}}, {}, {{Id::CPU_TEMPERATURE, 50.0},
         {Id::GPU_TEMPERATURE, NONE, Reason::NO_FILE}}},
        {"TwoVideoEnginesOfOneClass", "i915-6.12", {},
         {{"/proc/self/fdinfo/9", "drm-engine-video:\t0 ns", "drm-engine-video:\t500000000 ns"}},
         {{Id::GPU_LOAD_PROCESS, 50.0}}},
        {"I91561", "i915-6.1", {}, {}, {{Id::GPU_LOAD_PROCESS, 0.0},
         {Id::GPU_MEMORY_PROCESS, NONE, Reason::NOT_SUPPORTED}}},
        {"Xe", "xe-6.12", {}, {{"/proc/self/fdinfo/9",
         "drm-cycles-rcs:\t28257900\ndrm-total-cycles-rcs:\t7655183225",
         "drm-cycles-rcs:\t28258150\ndrm-total-cycles-rcs:\t7655184225"}}, {{Id::GPU_LOAD_PROCESS, 25.0},
         {Id::GPU_MEMORY_PROCESS, 812344.0 * 1024}}},
        {"XeFiles", "xe-6.12", {{amd("/tile0/gt0/freq0/act_freq"), "2050\n"},
         {amd("/tile0/gt0/freq0/rp0_freq"), "2400\n"},
         {amd("/tile0/gt0/gtidle/idle_residency_ms"), "1000\n"}, {amd("/hwmon/hwmon3/name"), "xe\n"},
         {amd("/hwmon/hwmon3/energy1_input"), "5000000\n"}, {amd("/hwmon/hwmon3/temp2_label"), "pkg\n"},
         {amd("/hwmon/hwmon3/temp2_input"), "58000\n"}},
         {{"/sys/bus/pci/devices/0000:03:00.0/tile0/gt0/gtidle/idle_residency_ms", "1000", "1100"},
         {"/sys/bus/pci/devices/0000:03:00.0/hwmon/hwmon3/energy1_input", "5000000", "35000000"}},
         {{Id::GPU_CLOCK, 2050.0}, {Id::GPU_CLOCK_MAX, 2400.0}, {Id::GPU_LOAD_DEVICE, 80.0},
         {Id::GPU_POWER, 60.0}, {Id::GPU_TEMPERATURE, 58.0}}},
        {"XeGuestsPrintNoCycles", "",
         {{"/proc/self/fdinfo/9", "drm-driver:\txe\ndrm-client-id:\t6\ndrm-resident-gtt:\t1 MiB\n"}}, {},
         {{Id::GPU_LOAD_PROCESS, NONE, Reason::NOT_SUPPORTED}, {Id::GPU_MEMORY_PROCESS, 1048576.0}}},
        {"Msm", "msm-6.12", {}, {{"/proc/self/fdinfo/11", "4093522000", "4468522000"}},
         {{Id::GPU_LOAD_PROCESS, 75.0}, {Id::GPU_CLOCK, 585.0}, {Id::GPU_CLOCK_MAX, 710.0},
         {Id::GPU_TEMPERATURE, 47.3}, {Id::GPU_MEMORY_PROCESS, 43264.0 * 1024}}},
        {"PanfrostOff", "panfrost-profiling-off", {}, {},
         {{Id::GPU_LOAD_PROCESS, NONE, Reason::SWITCHED_OFF}, {Id::GPU_CLOCK, 599.99999},
         {Id::GPU_CLOCK_MAX, 799.999987}, {Id::GPU_MEMORY_PROCESS, 36496.0 * 1024}}},
        {"PanfrostOn", "panfrost-profiling-on", {}, {{"/proc/self/fdinfo/8", "1846584880", "2146584880"},
         {"/proc/self/fdinfo/8", "71932239", "171932239"}}, {{Id::GPU_LOAD_PROCESS, 60.0}}},
        {"V3d", "v3d-6.12", {}, {{"/proc/self/fdinfo/23", "1400777565", "1650777565"},
         {"/sys/devices/platform/axi/1002000000.v3d/gpu_stats", "render\t239043069420\t22619\t27284814161",
         "render\t239543069420\t22620\t27684814161"}}, {{Id::GPU_LOAD_PROCESS, 50.0},
         {Id::GPU_LOAD_DEVICE, 80.0}, {Id::GPU_TEMPERATURE, 58.45}, {Id::CPU_TEMPERATURE, 58.45},
         {Id::GPU_MEMORY_PROCESS, 43264.0 * 1024}}},
        {"BoardLoad", "msm-6.12", {{"/sys/class/devfreq/5000000.gpu/load", "42@800000000Hz\n"}}, {},
         {{Id::GPU_LOAD_DEVICE, 42.0}}},
        {"Nouveau", "nouveau", {}, {}, {{Id::GPU_LOAD_PROCESS, NONE, Reason::NOT_SUPPORTED},
         {Id::GPU_TEMPERATURE, 52.0}, {Id::GPU_POWER, 38.5}, {Id::GPU_FAN, 1420.0}}},
        {"NothingToTell", "nouveau-lima-vc4-virtio-asahi", {{"/proc/self/fd/7", "/dev/dri/renderD128"}}, {},
         {{Id::GPU_LOAD_PROCESS, NONE, Reason::NOT_SUPPORTED},
         {Id::GPU_MEMORY_PROCESS, NONE, Reason::NOT_SUPPORTED}}},
        {"NvidiaAsleep", "nvidia", {}, {}, {{Id::GPU_LOAD_DEVICE, NONE, Reason::ASLEEP}}},
        {"AmdProcessor", "cpu-amd", {}, {}, {{Id::CPU_TEMPERATURE, 64.875}}},
        {"IntelProcessor", "cpu-intel",
         {{"/proc/self/stat", "9 (a) b ( c) R 1 1 1 0 -1 0 0 0 0 0 100 50 0 0 20 0 1 0 5 0 0\n"},
         {"/proc/meminfo", "MemTotal: 1000 kB\nMemFree: 100 kB\nMemAvailable:   600 kB\n"},
         {"/proc/self/status", "Name:\tx\nVmRSS:\t  20 kB\n"}},
         {{"/proc/stat", "cpu  231842 1201 88231 9182733", "cpu  231942 1201 88231 9183033"},
         {"/proc/stat", "cpu1 57310 290 22004 2297712", "cpu1 57390 290 22004 2297732"},
         {"/proc/self/stat", "100 50", "160 90"}}, {{Id::CPU_LOAD_PROCESS, 50.0},
         {Id::CPU_LOAD_SYSTEM, 25.0}, {Id::CPU_LOAD_CORE, 80.0}, {Id::CPU_CLOCK, 4200.11},
         {Id::CPU_TEMPERATURE, 57.0}, {Id::MEMORY_PROCESS, 20480.0}, {Id::MEMORY_USED, 409600.0},
         {Id::MEMORY_FREE, 614400.0}}},
        {"TheFirmwaresGuessComesLast", "", {{"/sys/class/thermal/thermal_zone0/type", "acpitz\n"},
         {"/sys/class/thermal/thermal_zone0/temp", "27800\n"},
         {"/sys/class/thermal/thermal_zone1/type", "bigcore0-thermal\n"},
         {"/sys/class/thermal/thermal_zone1/temp", "71000\n"}}, {}, {{Id::CPU_TEMPERATURE, 71.0}}},
        // Programs open every device there is; the one that works is theirs.
        {"TheDeviceThatWorks", "amdgpu-6.18",
         {{"/proc/self/fdinfo/20", otherClient("0000:0a:00.0", "3", "1000")},
         {"/sys/bus/pci/devices/0000:0a:00.0/gpu_busy_percent", "7\n"}},
         {{"/proc/self/fdinfo/20", "1000 ns", "50001000 ns"}}, {{Id::GPU_LOAD_PROCESS, 10.0},
         {Id::GPU_LOAD_DEVICE, 7.0}, {Id::GPU_MEMORY_PROCESS, 10485760.0}}},
        {"CountersThatStepBack", "amdgpu-6.1", {}, {{"/proc/self/fdinfo/14", "48211906512", "48111906512"}},
         {{Id::GPU_LOAD_PROCESS, 0.0}}},
        {"AnotherClientUnderTheSameNumber", "amdgpu-6.1", {},
         {{"/proc/self/fdinfo/14", "drm-client-id:\t217", "drm-client-id:\t218"},
         {"/proc/self/fdinfo/14", "48211906512", "98211906512"}},
         {{Id::GPU_LOAD_PROCESS, NONE, Reason::FIRST_READING}}},
        {"GarbageInFiles", "amdgpu-6.18", {{amd("/gpu_busy_percent"), "900\n"},
         {amd("/hwmon/hwmon5/temp1_input"), "-5000\n"}, {amd("/hwmon/hwmon5/power1_average"), "much\n"}},
         {}, {{Id::GPU_LOAD_DEVICE, 100.0}, {Id::GPU_TEMPERATURE, NONE, Reason::MALFORMED},
         {Id::GPU_POWER, NONE, Reason::MALFORMED}}},
    };
    // clang-format on
    return all;
}

class Machines : public testing::TestWithParam<Row> {};

TEST_P(Machines, TellsItsFigures) {
    const Row& row = GetParam();
    const Machine machine(row.machine);
    machine.write(row.added);
    const sources::FileTree tree(machine.folder());
    sources::MachineFigures figures(tree, 1);
    figures.read(10.0);
    for (const Change& change : row.changes) {
        machine.change(change.path, change.from, change.to);
    }
    figures.read(10.5);
    for (const Expected& expected : row.expected) {
        SCOPED_TRACE(sources::nameOf(expected.id));
        const sources::Value& value = figures.value(expected.id);
        EXPECT_EQ(value.reason, expected.reason) << value.source;
        EXPECT_NEAR(value.number.value_or(NONE), expected.value, 1e-6 * expected.value + 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Machines, testing::ValuesIn(rows()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(MachineFigures, ARateNeedsTwoReadingsAndAProcessFigureAProcess) {
    const Machine machine("amdgpu-6.18");
    const sources::FileTree tree(machine.folder());
    sources::MachineFigures first(tree, 1);
    first.read(1.0);
    EXPECT_EQ(first.value(Id::GPU_LOAD_PROCESS).reason, Reason::FIRST_READING);
    sources::MachineFigures nobody(tree, 0);
    nobody.read(1.0);
    EXPECT_EQ(nobody.value(Id::GPU_LOAD_PROCESS).reason, Reason::NO_PROCESS);
    EXPECT_EQ(nobody.value(Id::GPU_LOAD_DEVICE).number, 63.0);
}

// Copying from one device to another makes both work; a pause of one is no reason to leave it.
TEST(MachineFigures, TheChosenDeviceStaysForAWhile) {
    const Machine machine("amdgpu-6.18");
    const sources::FileTree tree(machine.folder());
    sources::MachineFigures figures(tree, 1);
    // Time, and nanoseconds of work that each of the two has done by then.
    const struct {
        double time;
        const char* first;
        const char* second;
        const char* chosen;
    } steps[] = {{0.0, "100", "100", "0000:03:00.0"},   {0.5, "100", "300", "0000:0a:00.0"},
                 {1.0, "100", "300", "0000:0a:00.0"},   {1.5, "900", "300", "0000:0a:00.0"},
                 {2.0, "1900", "400", "0000:0a:00.0"},  {5.0, "9900", "500", "0000:03:00.0"},
                 {6.0, "19900", "500", "0000:03:00.0"}, {6.5, "19900", "700", "0000:03:00.0"},
                 {8.5, "19900", "900", "0000:0a:00.0"}};
    machine.write({{"/proc/self/fdinfo/15", ""}});
    for (const auto& step : steps) {
        machine.write({{"/proc/self/fdinfo/14",
                        otherClient("0000:03:00.0", "41", step.first) + "\ndrm-resident-vram:\t20 MiB\n"},
                       {"/proc/self/fdinfo/20", otherClient("0000:0a:00.0", "3", step.second)}});
        figures.read(step.time);
        EXPECT_EQ(figures.gpu().pciDevice, step.chosen) << step.time;
    }
}

TEST(MachineFigures, LinksDoNotLeadOutOfARecordedFolder) {
    const Machine machine("");
    fs::create_directories(machine.folder() + "/proc");
    fs::create_symlink("/proc/meminfo", machine.folder() + "/proc/meminfo");
    fs::create_symlink("../../../../../../../proc/stat", machine.folder() + "/proc/stat");
    mkfifo((machine.folder() + "/proc/version").c_str(), 0600);
    const sources::FileTree tree(machine.folder());
    EXPECT_NE(tree.read("/proc/meminfo").error, 0);
    EXPECT_NE(tree.read("/proc/stat").error, 0);
    EXPECT_NE(tree.read("/proc/version").error, 0);
}

// The counters of what the number stands for now have nothing to do with those before.
TEST(MachineFigures, ADescriptorThatIsClosedAndUsedAgainIsAnother) {
    const Machine machine("");
    const sources::FileTree tree(machine.folder());
    sources::GpuClients clients(tree, "/proc/self");
    const auto readAt = [&](double now, const std::string& text) {
        machine.write({{"/proc/self/fdinfo/7", "pos:\t0\n" + text}});
        clients.read(now);
        return clients.load().number.value_or(NONE);
    };
    const auto client = [](const std::string& id, const std::string& milliseconds) {
        return "drm-driver:\tamdgpu\ndrm-pdev:\t0000:03:00.0\ndrm-client-id:\t" + id + "\ndrm-engine-gfx:\t" +
               milliseconds + "000000 ns\n";
    };
    readAt(1.0, client("5", "9000"));
    EXPECT_EQ(readAt(2.0, client("5", "9500")), 50.0);
    EXPECT_LE(readAt(3.0, client("6", "100")), 10.0) << "a new client";
    EXPECT_EQ(readAt(4.0, client("6", "300")), 20.0);
    EXPECT_LE(readAt(5.0, ""), 0.0) << "a pipe";
}

TEST(FdInfo, UnitsAreOfEachLine) {
    const auto info = sources::parseFdInfo(
        "drm-driver: x\ndrm-engine-a: 5 ns\ndrm-engine-a: 7 ns\ndrm-memory-r: \t2 MiB\n"
        "drm-resident-s:\t3\ndrm-maxfreq-a:\t7 MHz\ndrm-total-t:\t99999999999999999999 KiB\nnonsense\n");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->engines.at("a").busyNs, 12U);
    EXPECT_EQ(info->engines.at("a").maxHz, 7000000U);
    EXPECT_EQ(info->regions.at("r").resident, 2097152U);
    EXPECT_EQ(info->regions.at("s").resident, 3U);
    EXPECT_FALSE(info->regions.count("t") != 0 && info->regions.at("t").total);
    EXPECT_FALSE(sources::parseFdInfo("pos:\t0\nflags:\t02\n"));
}

}  // namespace
