#include "ostra/FigureReport.h"
#include "ostra/ProcessSocket.h"
#include "platform/OstraTesting.h"
#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <ostra/Ostra.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <thread>

namespace ostra {
namespace {

using platform::FigureReport;

/// Somebody who watches this process.
class Asker {
public:
    explicit Asker(std::uint32_t number)
        : mNumber(number), mSocket(platform::openSocketAt(platform::askerPath(runtimeDirectory(), number))) {}
    ~Asker() { close(mSocket); }

    /// Returns the process's answer.
    std::optional<FigureReport> ask() const {
        platform::ProcessMessage message;
        message.kind = platform::ProcessMessage::Kind::FIGURES;
        message.asker = mNumber;
        EXPECT_EQ(platform::sendMessage(runtimeDirectory(), getpid(), message), "");
        pollfd socket = {mSocket, POLLIN, 0};
        poll(&socket, 1, 5000);
        std::array<char, sizeof(FigureReport) + 1> bytes;
        const ssize_t size = recv(mSocket, bytes.data(), bytes.size(), MSG_DONTWAIT);
        return platform::decodeReport({bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))});
    }

private:
    std::uint32_t mNumber;
    int mSocket;
};

TEST(Figures, AreAskedForByNumber) {
    for (const char* const text : {"figures 0", "figures 4294967295"}) {
        EXPECT_EQ(platform::encodeMessage(platform::decodeMessage(text).value()), text);
    }
    for (const char* const text :
         {"figures", "figures ", "figures -1", "figures 4294967296", "figures 1 2", "figures ../a"}) {
        EXPECT_FALSE(platform::decodeMessage(text)) << text;
    }
}

TEST(Figures, AreFilledOnlyWhileSomebodyAsksAndAreNeverTorn) {
    runtimeDirectory();
    Ostra::receiveKeyEvents();
    EXPECT_EQ(platform::figuresToFill(), nullptr);
    const Asker asker(7);
    ASSERT_TRUE(asker.ask());
    EXPECT_EQ(support::runForked([] { return platform::figuresToFill() == nullptr ? 0 : 1; }), 0)
        << "nobody asked the child";
    std::atomic<bool> isOver{false};
    std::thread layer([&] {
        for (std::uint32_t i = 1; !isOver; ++i) {
            if (FigureReport* const report = platform::figuresToFill()) {
                report->refreshes = i;
                report->lastFrames.fill({static_cast<float>(i), 0.0F, 0.0F, 0.0F});
                platform::handOutFigures();
            }
        }
    });
    std::uint32_t last = 0;
    for (int i = 0; i < 500; ++i) {
        const auto report = asker.ask();
        ASSERT_TRUE(report);
        EXPECT_GE(report->refreshes, last);
        last = report->refreshes;
        EXPECT_TRUE(last == 0 ||
                    std::all_of(report->lastFrames.begin(), report->lastFrames.end(),
                                [&](const auto& frame) { return frame.total == static_cast<float>(last); }));
    }
    EXPECT_GT(last, 0U);
    isOver = true;
    layer.join();
}

TEST(Figures, TheSocketOfAnAskerThatWasKilledIsRemoved) {
    runtimeDirectory();
    Ostra::receiveKeyEvents();
    const std::string path = platform::askerPath(runtimeDirectory(), 8);
    { const Asker killed(8); }
    ASSERT_TRUE(std::filesystem::exists(path));
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::FIGURES;
    message.asker = 8;
    EXPECT_EQ(platform::sendMessage(runtimeDirectory(), getpid(), message), "");
    EXPECT_TRUE(support::waitUntil([&] { return !std::filesystem::exists(path); }));
}

}  // namespace
}  // namespace ostra
