// Layers of several APIs in one process, and layers that come and go.

#include "doubles/Emulator.h"
#include "faults/FaultFixture.h"

namespace faults {
namespace {

class LayerFaults : public FaultTest {};

TEST_F(LayerFaults, TheOverlayMovesFromOneApiToTheOther) {
    mOptions.apis = "0,1";
    const auto started = startShown();
    HostProcess& host = *started;
    for (int round = 0; round < 10; ++round) {
        SCOPED_TRACE(round);
        const char* const api = round % 2 == 0 ? "1" : "0";
        ASSERT_EQ(set("api", api), "");
        ASSERT_EQ(publish(), "");
        ASSERT_TRUE(host.waitFor(std::string("shown") + api, 1));
        auto report = host.report();
        EXPECT_EQ(report["shown0"] + report["shown1"], round % 2 == 0 ? "01" : "10");

        // A key is one press for the layer that is shown, and none for the other.
        ASSERT_NO_FATAL_FAILURE(setDumping(host, true));
        ASSERT_TRUE(host.waitForFrames(20));
        EXPECT_EQ(host.report()["dumping"], "1");
        ASSERT_NO_FATAL_FAILURE(setDumping(host, false));
    }
    EXPECT_EQ(host.dumps().size(), 10U);
    {
        const Publisher publisher(Publisher::What::ANYTHING, 4);
        EXPECT_TRUE(host.waitFor("changes", [](long changes) { return changes > 200; }));
    }
    expectFollows(host);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
}

TEST_F(LayerFaults, AThousandLayersLeaveNothingBehind) {
    const auto started = startShown();
    HostProcess& host = *started;
    host.tell("reattach 50");
    host.tell("renew 50");
    auto before = host.report();
    host.tell("reattach 1000");
    host.tell(IS_SANITIZED ? "renew 100" : "renew 1000");
    auto after = host.report();
    EXPECT_EQ(after["shown0"], "1");
    // The reader beside the frames may just have one of its files open.
    const long files = std::stol(before["files"]);
    EXPECT_TRUE(host.waitFor("files", [files](long now) { return now <= files; }));
    EXPECT_EQ(after["threads"], before["threads"]);
    if (!IS_SANITIZED && !doubles::isEmulated()) {  // QEMU 7.2 keeps 170 KiB of every thread that ended
        // Listeners are kept for good, some dozen bytes each; anything more would be a leak.
        EXPECT_LE(std::stol(after["pages"]), std::stol(before["pages"]) + 100);
    }
    // All those listeners together.
    ASSERT_NO_FATAL_FAILURE(setDumping(host, true));
    ASSERT_EQ(sendToBackground(host), "");
    ASSERT_TRUE(host.waitFor("dumping", 0));
    expectFollows(host);
    EXPECT_EQ(host.end(), 0);
    EXPECT_EQ(host.dumpError(), "");
}

}  // namespace
}  // namespace faults
