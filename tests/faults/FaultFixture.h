#pragma once

#include "faults/HostProcess.h"
#include "faults/Publisher.h"
#include "ostra/ProcessSocket.h"
#include "platform/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace faults {

constexpr int DUMP_KEY = 24;
constexpr int CAPTURE_KEY = 25;

/// Sanitizers make everything slower: there, fewer repetitions do.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IS_SANITIZED = true;
#else
constexpr bool IS_SANITIZED = false;
#endif

/// A runtime directory that the test shares with the hosts it starts.
class FaultTest : public testing::Test {
protected:
    FaultTest() {
        mOptions.runtime = mRuntime.path();
        mOptions.folder = mFolder.path();
        setenv("KORDANIX_RUNTIME_DIR", mOptions.runtime.c_str(), 1);
    }

    /// A host that shows the overlay.
    std::unique_ptr<HostProcess> startShown() const {
        EXPECT_EQ(showOverlay(), "");
        auto host = std::make_unique<HostProcess>(mOptions);
        EXPECT_TRUE(host->waitFor("shown0", 1));
        return host;
    }

    /// Starts or ends a dump.
    void setDumping(HostProcess& host, bool isDumping) const {
        ASSERT_EQ(pressKey(host, DUMP_KEY), "");
        ASSERT_TRUE(host.waitFor("dumping", isDumping ? 1 : 0));
    }

    std::string pressKey(const HostProcess& host, int code) const {
        platform::ProcessMessage message;
        message.key = {code, 1};
        return platform::sendMessage(mOptions.runtime, host.id(), message);
    }

    std::string sendToBackground(const HostProcess& host) const {
        platform::ProcessMessage message;
        message.kind = platform::ProcessMessage::Kind::BACKGROUND;
        return platform::sendMessage(mOptions.runtime, host.id(), message);
    }

    /// Publishes something that the host can be seen to follow.
    void expectFollows(HostProcess& host) const {
        ASSERT_EQ(set("bg_transparency", "78"), "");
        ASSERT_EQ(showOverlay(), "");
        EXPECT_TRUE(host.waitFor("opacity", 78));
        EXPECT_TRUE(host.waitFor("shown0", 1));
        auto report = host.report();
        EXPECT_EQ(report["torn"], "0");
    }

    const platform::TemporaryDirectory mRuntime;
    const platform::TemporaryDirectory mFolder;
    HostOptions mOptions;
};

}  // namespace faults
