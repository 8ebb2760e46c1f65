// Runtime directories that cannot be used, or not any more.

#include "faults/FaultFixture.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace faults {
namespace {

namespace fs = std::filesystem;

constexpr uid_t NOBODY = 65534;

/// In the process that becomes the host: a small file system of its own in the folder's place, with the
/// settings that show the overlay in it.
bool mountSmallDisk(const std::string& folder) {
    const std::string user = std::to_string(geteuid());
    if (unshare(CLONE_NEWNS | (user == "0" ? 0 : CLONE_NEWUSER)) != 0) {
        return false;
    }
    if (user != "0") {
        std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
    }
    mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
    // Room for the folder, the property file and its draft.
    return mount("small", folder.c_str(), "tmpfs", 0, "size=512k,nr_inodes=3,mode=0700") == 0 &&
           showOverlay().empty();
}

bool fillDisk(const std::string& folder) {
    const int file = open((folder + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::string block(4096, 'x');
    while (write(file, block.data(), block.size()) > 0) {
    }
    close(file);
    return file >= 0;
}

bool makeReadOnly(const std::string& folder) {
    return mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

struct DirectoryCase {
    const char* name;
    /// Makes the directory what it is, before the host is started; false: not possible here.
    std::function<bool(std::string& path)> spoil;
    /// The same in the host's process.
    std::function<bool(const std::string& path)> prepare;
    const char* complaint;
    bool isShown;  ///< the properties are there to be read
};

void PrintTo(const DirectoryCase& directory, std::ostream* stream) {
    *stream << directory.name;
}

class RuntimeDirectoryFaults : public FaultTest, public testing::WithParamInterface<DirectoryCase> {};

// The application goes on, the overlay does without what cannot be had, and says so once.
TEST_P(RuntimeDirectoryFaults, LeaveTheApplicationAlone) {
    const DirectoryCase& directory = GetParam();
    ASSERT_EQ(showOverlay(), "");
    std::string path = mOptions.runtime;
    if (directory.spoil && !directory.spoil(path)) {
        GTEST_SKIP() << "only root can make such a directory";
    }
    mOptions.runtime = path;
    if (directory.prepare) {
        mOptions.prepare = [&] { return directory.prepare(path); };
    }
    HostProcess host(mOptions);
    const bool isRunning = host.waitFor("frames", [](long frames) { return frames >= 300; });
    if (!isRunning && host.wait() == HostProcess::CANNOT_BE_PREPARED) {
        GTEST_SKIP() << "file systems cannot be mounted here";
    }
    ASSERT_TRUE(isRunning);
    auto report = host.report();
    EXPECT_EQ(report["shown0"], directory.isShown ? "1" : "0");
    EXPECT_EQ(host.end(), 0);
    EXPECT_THAT(host.logged(directory.complaint), testing::Not(testing::IsEmpty()));
    EXPECT_THAT(host.logged("runtime directory").size() + host.logged("Key events").size() +
                    host.logged("no properties").size(),
                testing::Le(4U))
        << testing::PrintToString(host.logged());
}

const DirectoryCase DIRECTORIES[] = {
    {"Missing",
     [](std::string& path) {
         path += "/none/there";
         return true;
     },
     {},
     "cannot be created: No such file",
     false},
    {"Foreign",
     [](std::string& path) { return geteuid() == 0 && chown(path.c_str(), NOBODY, NOBODY) == 0; },
     {},
     "belongs to another user",
     false},
    {"OpenToAll",
     [](std::string& path) { return chmod(path.c_str(), 0777) == 0; },
     {},
     "by other users",
     false},
    {"File",
     [](std::string& path) {
         path += "/properties";
         return true;
     },
     {},
     "is not a folder",
     false},
    {"DamagedProperties",
     [](std::string& path) {
         std::ofstream(path + "/properties") << "damaged";
         return true;
     },
     {},
     "does not begin with",
     false},
    {"ReadOnly",
     {},
     [](const std::string& path) { return mountSmallDisk(path) && makeReadOnly(path); },
     "Read-only file system",
     true},
    {"Full",
     {},
     [](const std::string& path) { return mountSmallDisk(path) && fillDisk(path); },
     "No space left on device",
     true},
};

INSTANTIATE_TEST_SUITE_P(Directories, RuntimeDirectoryFaults, testing::ValuesIn(DIRECTORIES),
                         [](const auto& directory) { return directory.param.name; });

TEST_F(FaultTest, TheRuntimeDirectoryGoesWhileTheOverlayRuns) {
    const auto started = startShown();
    HostProcess& host = *started;
    ASSERT_NO_FATAL_FAILURE(setDumping(host, true));
    fs::remove_all(mOptions.runtime);
    EXPECT_TRUE(host.waitForFrames(100));
    EXPECT_EQ(host.report()["shown0"], "1");
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
    EXPECT_GT(host.countFrames(1), 50U);
}

}  // namespace
}  // namespace faults
