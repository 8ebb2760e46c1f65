// Writers of settings at their worst, while an overlay is running.

#include "faults/FaultFixture.h"
#include "platform/ChildProcess.h"
#include "properties/SystemProperties.h"

#include <csignal>
#include <thread>

namespace faults {
namespace {

class PublicationFaults : public FaultTest {};

TEST_F(PublicationFaults, TwoProcessesPublishThousandsOfTimes) {
    mOptions.pace = std::chrono::microseconds(0);
    const auto started = startShown();
    HostProcess& host = *started;
    const int times = 2000;
    Publisher first(Publisher::What::ANYTHING, 1, times / 2);
    Publisher second(Publisher::What::ANYTHING, 2, times / 2);
    EXPECT_EQ(first.wait(), 0);
    EXPECT_EQ(second.wait(), 0);
    EXPECT_TRUE(host.waitFor("changes", [](long changes) { return changes > 100; }));
    expectFollows(host);
    EXPECT_EQ(host.end(), 0);
}

TEST_F(PublicationFaults, WritersAreKilledThousandsOfTimes) {
    const auto started = startShown();
    HostProcess& host = *started;
    std::mt19937 random(7);
    const unsigned rounds = IS_SANITIZED ? 600 : 3000;
    for (unsigned round = 0; round < rounds; ++round) {
        const pid_t writer = platform::startChild([round] {
            std::mt19937 own(round);
            for (;;) {
                setText(own);
                setAny(own);
                // Grows the area, too; not so far that nothing would be left for the test's own.
                set("debug.fault.new" + std::to_string(round % 500), "x");
                publish();
            }
            return 0;
        });
        // Long enough for some of them to get as far as a publication.
        std::this_thread::sleep_for(std::chrono::microseconds(random() % (IS_SANITIZED ? 8000 : 1500)));
        kill(writer, SIGKILL);
        ASSERT_EQ(platform::waitForChild(writer), -SIGKILL);
        ASSERT_EQ(platform::propertyAreaError(), "");
    }
    expectFollows(host);
    EXPECT_TRUE(host.waitFor("changes", [](long changes) { return changes > 10; }));
    EXPECT_EQ(host.end(), 0);
}

}  // namespace
}  // namespace faults
