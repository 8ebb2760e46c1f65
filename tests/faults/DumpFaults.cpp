// Dumps of a running overlay, when disks fail and when keys come in by the ten thousand.

#include "faults/FaultFixture.h"
#include "properties/SystemProperties.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>

namespace faults {
namespace {

namespace fs = std::filesystem;

class DumpFaults : public FaultTest {
protected:
    /// Starts a dump, lets it have some frames and ends it.
    void dump(HostProcess& host) const {
        ASSERT_NO_FATAL_FAILURE(setDumping(host, true));
        ASSERT_TRUE(host.waitForFrames(60));
        ASSERT_NO_FATAL_FAILURE(setDumping(host, false));
    }
};

TEST_F(DumpFaults, AFolderThatCannotBeWrittenToEndsOneDumpAndNothingElse) {
    fs::create_symlink("/proc", mFolder.path("1"));
    const auto started = startShown();
    HostProcess& host = *started;
    const long files = std::stol(host.report().at("files"));
    dump(host);
    EXPECT_TRUE(host.waitFor("files", [files](long now) { return now <= files; }));
    EXPECT_THAT(host.logged("The dump ends"), testing::ElementsAre(testing::HasSubstr("/proc")));
    dump(host);
    dump(host);
    expectFollows(host);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumps().size(), 3U);
    EXPECT_EQ(host.dumpError(2), "");
    EXPECT_GT(host.countFrames(3), 50U);
}

TEST_F(DumpFaults, TheFolderGoesWhileADumpIsWritten) {
    const auto started = startShown();
    HostProcess& host = *started;
    ASSERT_NO_FATAL_FAILURE(setDumping(host, true));
    ASSERT_TRUE(host.waitFor("frames", [&host](long) { return host.countFrames(1) > 0; }));
    fs::remove_all(mFolder.path("1"));
    ASSERT_NO_FATAL_FAILURE(setDumping(host, false));
    dump(host);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(2), "");
}

TEST_F(DumpFaults, AFloodOfKeysAndGarbageLosesNoFrameOfADump) {
    mOptions.device = "adreno-c32";  // whose counters make captures last
    const auto started = startShown();
    HostProcess& host = *started;
    const auto before = host.report();
    std::mt19937 random(3);
    {
        const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        platform::processSocketPath(mOptions.runtime, host.id())
            .copy(address.sun_path, sizeof(address.sun_path) - 1);
        ASSERT_EQ(connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        const auto send = [descriptor](const std::string& bytes) {
            return ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
                   static_cast<ssize_t>(bytes.size());
        };
        for (int i = 0; i < 100000; ++i) {
            // Now and then one that starts or ends a dump or a capture, among keys that mean nothing.
            const int kind = static_cast<int>(random() % 2000);
            const int code = kind == 0 ? DUMP_KEY : kind < 20 ? CAPTURE_KEY : kind + 100;
            ASSERT_TRUE(send("key " + std::to_string(code) + (random() % 3 == 0 ? " 0" : " 1")));
            if (i % 50 == 0) {
                std::string garbage(random() % 200, '\0');
                for (char& byte : garbage) {
                    byte = static_cast<char>(random());
                }
                ASSERT_TRUE(send(garbage));
            }
        }
        close(descriptor);
    }
    // What still waits to be read may hold the key once more.
    ASSERT_EQ(sendToBackground(host), "");
    ASSERT_TRUE(host.waitForFrames(20));
    host.tell("reattach 1");
    ASSERT_TRUE(host.waitFor("dumping", 0));
    const std::size_t floodDumps = host.dumps().size();
    EXPECT_GT(floodDumps, 3U);
    dump(host);
    EXPECT_EQ(host.dumps().size(), floodDumps + 1);
    expectFollows(host);
    // The reader beside the frames may just have one of its files open.
    const long files = std::stol(before.at("files"));
    EXPECT_TRUE(host.waitFor("files", [files](long now) { return now <= files; }));
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
    EXPECT_GT(host.countFrames(floodDumps + 1), 50U);
    EXPECT_THAT(host.logged("not understood"), testing::SizeIs(1));
}

}  // namespace
}  // namespace faults
