#include "figures/sources/NvidiaLibrary.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>

// The search path of libraries is this test's environment; each case has a process of its own.
namespace {

using sources::NvidiaLibrary;
using sources::Reason;
using sources::Value;

bool waitForAnswer(NvidiaLibrary& library, int tenths) {
    for (int i = 0; i < tenths && !library.hasAnswered(); ++i) {
        usleep(100000);
    }
    return library.hasAnswered();
}

TEST(NvidiaLibrary, WhatIsMissingOrNonsenseIsNoFigure) {
    NvidiaLibrary library("", 0);
    ASSERT_TRUE(waitForAnswer(library, 100));
    EXPECT_EQ(library.temperature().number, 71.0);
    EXPECT_EQ(library.memoryUsed().number, 500.0);
    EXPECT_EQ(library.memoryTotal().reason, Reason::NOT_SUPPORTED) << "a total of 0";
    EXPECT_EQ(library.fan().reason, Reason::NOT_SUPPORTED);
    EXPECT_EQ(library.clock().reason, Reason::NOT_SUPPORTED) << "there is no such function";
    EXPECT_EQ(library.processMemory(getpid()).number, 4096.0);
    EXPECT_EQ(library.processMemory(1234567).reason, Reason::NOT_SUPPORTED);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(library.processLoad(getpid()).number, 30.0);
    }
    const auto isSilent = [&] { return library.temperature().reason == Reason::NOT_ANSWERING; };
    EXPECT_EQ(support::runForked([&] { return isSilent() ? 0 : 1; }), 0) << "a forked child asks it";
}

TEST(NvidiaLibrary, IsShutDownWhenItIsNotNeededButNotByAForkedChild) {
    const auto isShutDown = [] {
        const char* const state = getenv("FAKE_NVIDIA");
        return state != nullptr && std::string(state) == "shut down";
    };
    auto library = std::make_unique<NvidiaLibrary>("", 0);
    ASSERT_TRUE(waitForAnswer(*library, 100));
    const auto leave = [&] {
        library.reset();
        return isShutDown() ? 1 : 0;
    };
    EXPECT_EQ(support::runForked(leave), 0);
    library.reset();
    EXPECT_TRUE(isShutDown());
}

TEST(NvidiaLibrary, AStartThatHangsIsNotWaitedFor) {
    setenv("FAKE_NVIDIA", "hang", 1);
    NvidiaLibrary library("", 0);
    EXPECT_FALSE(waitForAnswer(library, 3));
    EXPECT_EQ(library.temperature().reason, Reason::NOT_ANSWERING);
}

}  // namespace
