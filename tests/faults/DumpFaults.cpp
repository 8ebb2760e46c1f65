// Dumps of a running overlay, when disks fail and when keys come in by the ten thousand.

#include "faults/FaultFixture.h"
#include "properties/SystemProperties.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

namespace faults {
namespace {

namespace fs = std::filesystem;

class DumpFaults : public FaultTest {
protected:
    void SetUp() override { ASSERT_EQ(showOverlay(), ""); }

    /// Starts a dump, lets it have some frames and ends it.
    void dump(HostProcess& host) const {
        ASSERT_EQ(pressKey(host, DUMP_KEY), "");
        ASSERT_TRUE(host.waitFor("dumping", "1"));
        const long frames = std::stol(host.report()["frames"]);
        ASSERT_TRUE(host.waitFor("frames", [frames](long now) { return now > frames + 60; }));
        ASSERT_EQ(pressKey(host, DUMP_KEY), "");
        ASSERT_TRUE(host.waitFor("dumping", "0"));
    }
};

TEST_F(DumpFaults, AFullDiskEndsOneDumpAndNothingElse) {
    fs::create_directory(mFolder.path("1"));
    fs::create_symlink("/dev/full", mFolder.path("1/frames.csv"));
    HostProcess host(mOptions);
    ASSERT_TRUE(host.waitFor("shown0", "1"));
    dump(host);
    EXPECT_THAT(host.logged("The dump ends"), testing::ElementsAre(testing::HasSubstr("No space left")));
    dump(host);
    dump(host);
    expectFollows(host);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumps().size(), 3U);
    EXPECT_EQ(host.dumpError(2), "");
    EXPECT_GT(host.countFrames(3), 50U);
}

TEST_F(DumpFaults, TheFolderGoesWhileADumpIsWritten) {
    HostProcess host(mOptions);
    ASSERT_TRUE(host.waitFor("shown0", "1"));
    ASSERT_EQ(pressKey(host, DUMP_KEY), "");
    ASSERT_TRUE(host.waitFor("dumping", "1"));
    ASSERT_TRUE(host.waitFor("frames", [this](long) { return fs::exists(mFolder.path("1/passes.csv")); }));
    fs::remove_all(mFolder.path("1"));
    ASSERT_EQ(pressKey(host, DUMP_KEY), "");
    ASSERT_TRUE(host.waitFor("dumping", "0"));
    dump(host);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(2), "");
}

TEST_F(DumpFaults, TheBackgroundAndADetachEndADumpWithItsFrames) {
    HostProcess host(mOptions);
    ASSERT_TRUE(host.waitFor("shown0", "1"));
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(pressKey(host, DUMP_KEY), "");
        ASSERT_TRUE(host.waitFor("dumping", "1"));
        if (i % 2 == 0) {
            ASSERT_EQ(sendToBackground(host), "");
        } else {
            host.tell("reattach 1");
        }
        ASSERT_TRUE(host.waitFor("dumping", "0"));
    }
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumps().size(), 20U);
    EXPECT_EQ(host.dumpError(), "");
}

/// Sends datagrams as they are, whatever they are.
class RawSender {
public:
    RawSender(const std::string& runtime, pid_t process)
        : mSocket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        platform::processSocketPath(runtime, process).copy(address.sun_path, sizeof(address.sun_path) - 1);
        EXPECT_EQ(connect(mSocket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }
    ~RawSender() { close(mSocket); }
    RawSender(const RawSender&) = delete;
    RawSender& operator=(const RawSender&) = delete;

    bool send(const std::string& bytes) const {
        return ::send(mSocket, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }

private:
    int mSocket;
};

TEST_F(DumpFaults, AFloodOfKeysAndGarbageLosesNoFrameOfADump) {
    mOptions.device = "adreno-c32";  // whose counters make captures last
    HostProcess host(mOptions);
    ASSERT_TRUE(host.waitFor("shown0", "1"));
    const auto before = host.report();
    std::mt19937 random(3);
    {
        const RawSender sender(mOptions.runtime, host.id());
        for (int i = 0; i < 100000; ++i) {
            // Now and then one that starts or ends a dump or a capture, among keys that mean nothing.
            const int kind = static_cast<int>(random() % 2000);
            const int code = kind == 0 ? DUMP_KEY : kind < 20 ? CAPTURE_KEY : kind + 100;
            ASSERT_TRUE(sender.send("key " + std::to_string(code) + (random() % 3 == 0 ? " 0" : " 1")));
            if (i % 50 == 0) {
                std::string garbage(random() % 200, '\0');
                for (char& byte : garbage) {
                    byte = static_cast<char>(random());
                }
                ASSERT_TRUE(sender.send(garbage));
            }
        }
    }
    // What still waits to be read may hold the key once more.
    ASSERT_EQ(sendToBackground(host), "");
    const long frames = std::stol(host.report()["frames"]);
    ASSERT_TRUE(host.waitFor("frames", [frames](long now) { return now > frames + 20; }));
    host.tell("reattach 1");
    ASSERT_TRUE(host.waitFor("dumping", "0"));
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
