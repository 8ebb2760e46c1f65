#include "core/SysPropWatcher.h"
#include "doubles/Emulator.h"
#include "doubles/Settings.h"
#include "support/ChildProcess.h"
#include "support/Threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <new>
#include <thread>

namespace {

using namespace std::chrono_literals;

TEST(Property, IsRegisteredInOrderOfCreationAndLookedUpUntilItExists) {
    SysProp<int>& late = SysPropWatcher::createSysProp<int>("debug.kordanix.late", 1);
    SysPropBase* const second = &SysPropWatcher::createSysProp<std::string>("debug.kordanix.late", "");
    const auto& all = SysPropWatcher::mProps;
    EXPECT_TRUE(all.at(all.size() - 2) == &late && all.back() == second);
    doubles::setProperty("debug.kordanix.late", "2");
    EXPECT_EQ(late.getValue(), 1) << "nothing changes without a re-read";
    SysPropWatcher::forceReadAllProps();
    EXPECT_EQ(late.getValue(), 2);
    const unsigned lookups = doubles::propertyLookups();
    late.read();
    EXPECT_EQ(doubles::propertyLookups(), lookups) << "once it exists it is looked up no more";
    EXPECT_EQ(SysPropWatcher::createSysProp<int>("debug.kordanix.late", 1).getValue(), 2) << "what is there";
}

/// A property for whose next text there is no memory.
struct Greedy : SysPropBase {
    using SysPropBase::SysPropBase;
    void parseAndSetValue(const char* text) override {
        if (isOutOfMemory.exchange(false)) {
            throw std::bad_alloc();
        }
        value = std::atoi(text);
    }
    std::atomic<bool> isOutOfMemory{false};
    std::atomic<int> value{0};
};

TEST(Watcher, PublishesBatchesToListenersAfterReReading) {
    constexpr const char* GENERATION = "debug.test.generation";
    SysProp<int>& first = SysPropWatcher::createSysProp<int>("debug.test.first", 0);
    SysProp<std::string>& second = SysPropWatcher::createSysProp<std::string>("debug.test.second", "");
    static auto& greedy = *new Greedy("debug.test.first");
    SysPropWatcher::addSysProp(greedy);
    static std::atomic<int> passes{0};
    static std::atomic<bool> isOutOfMemory{false};
    static std::string order;  // written under the registry's lock only
    SysPropWatcher::addPropChangedListener(
        [&first, &second] { order += std::to_string(first.getValue()) == second.getValue() ? "1" : "?"; });
    SysPropWatcher::addPropChangedListener([] {
        if (isOutOfMemory.exchange(false)) {
            throw std::bad_alloc();
        }
        order += "2";
        ++passes;
    });
    const auto publish = [&](const std::string& text) {
        doubles::setProperty("debug.test.first", text);
        doubles::setProperty("debug.test.second", text);
        const int before = passes;
        doubles::setProperty(GENERATION, "same");  // the serial counts, not the text
        return support::waitUntil([&] { return passes > before; });
    };
    SysPropWatcher::init(GENERATION, 1ms);
    SysPropWatcher::init("debug.test.other", 0ms);  // without effect
    doubles::setProperty("debug.test.other", "1");
    doubles::setProperty("debug.test.first", "1");
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(passes, 0) << "nothing is read before the generation property exists";
    if (!doubles::isEmulated()) {
        EXPECT_EQ(support::blockedSignals()["kordanix-watch"], support::ALL_SIGNALS);
    }

    for (int generation = 1; generation <= 3; ++generation) {
        ASSERT_TRUE(publish(std::to_string(generation)));
        EXPECT_EQ(first.getValue(), generation);
    }
    doubles::setProperty("debug.test.first", "77");
    doubles::failPropertyWaits(3);
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(first.getValue(), 3) << "unpublished, and a failed wait is no publication";
    ASSERT_TRUE(publish("4")) << "a failed wait is called again";
    SysPropWatcher::forceReadAllProps();  // runs no listener
    EXPECT_EQ(order, "12121212");

    isOutOfMemory = true;
    ASSERT_TRUE(publish("5")) << "a listener without memory is run again";
    greedy.isOutOfMemory = true;
    ASSERT_TRUE(publish("6"));
    EXPECT_TRUE(support::waitUntil([] { return greedy.value == 6; }))
        << "a text without memory is read again";
    EXPECT_EQ(order.find('?'), std::string::npos);
}

}  // namespace
