#include "core/SysPropWatcher.h"

#include "core/RenderingApiType.h"
#include "doubles/FakeProperties.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

/// Waits until the condition holds; false after five seconds.
bool eventually(const std::function<bool()>& condition) {
    for (int i = 0; i < 5000; ++i) {
        if (condition()) {
            return true;
        }
        std::this_thread::sleep_for(1ms);
    }
    return false;
}

constexpr const char* GENERATION = "debug.test.generation";

TEST(Property, BooleansAreExactlyTrueOrFalse) {
    struct Case {
        const char* text;
        bool whenDefaultIsFalse;
        bool whenDefaultIsTrue;
    };
    const Case cases[] = {{"true", true, true},   {"false", false, false}, {"TRUE", false, true},
                          {"1", false, true},     {"0", false, true},      {"", false, true},
                          {"true ", false, true}, {" true", false, true},  {"False", false, true}};
    SysProp<bool>& isFalse = SysPropWatcher::createSysProp<bool>("debug.test.bool", false);
    SysProp<bool>& isTrue = SysPropWatcher::createSysProp<bool>("debug.test.bool", true);
    EXPECT_FALSE(isFalse.getValue());
    EXPECT_TRUE(isTrue.getValue());
    for (const Case& c : cases) {
        doubles::setProperty("debug.test.bool", c.text);
        SysPropWatcher::forceReadAllProps();
        EXPECT_EQ(isFalse.getValue(), c.whenDefaultIsFalse) << "'" << c.text << "'";
        EXPECT_EQ(isTrue.getValue(), c.whenDefaultIsTrue) << "'" << c.text << "'";
    }
}

TEST(Property, IntegersAreSignedDecimalsOfWhichTheLowBitsCount) {
    const std::pair<const char*, int> cases[] = {{"42", 42},
                                                 {"   42", 42},
                                                 {"-3", -3},
                                                 {"+7", 7},
                                                 {"7abc", 7},
                                                 {"abc", 99},
                                                 {"", 99},
                                                 {"-", 99},
                                                 {"0x10", 0},
                                                 {"4294967297", 1},
                                                 {"4278224127", -16743169},
                                                 {"-16743169", -16743169},
                                                 {"2147483648", -2147483647 - 1},
                                                 {"1.9", 1}};
    SysProp<int>& number = SysPropWatcher::createSysProp<int>("debug.test.int", 99);
    SysProp<core::RenderingApiType>& api = SysPropWatcher::createSysProp<core::RenderingApiType>(
        "debug.test.int", static_cast<core::RenderingApiType>(99));
    for (const auto& [text, value] : cases) {
        doubles::setProperty("debug.test.int", text);
        SysPropWatcher::forceReadAllProps();
        EXPECT_EQ(number.getValue(), value) << "'" << text << "'";
        EXPECT_EQ(static_cast<int>(api.getValue()), value) << "'" << text << "'";
    }
}

TEST(Property, ReadsTheTextThatIsThereAtItsCreation) {
    doubles::setProperty("debug.test.there", "5");
    EXPECT_EQ(SysPropWatcher::createSysProp<int>("debug.test.there", 1).getValue(), 5);
    EXPECT_NE(&SysPropWatcher::createSysProp<int>("debug.test.there", 1),
              &SysPropWatcher::createSysProp<int>("debug.test.there", 1));
}

TEST(Property, IsRegisteredInOrderOfCreation) {
    const std::size_t before = SysPropWatcher::mProps.size();
    EXPECT_GT(before, 0U) << "the library's own";
    SysPropBase* const first = &SysPropWatcher::createSysProp<bool>("debug.test.order", false);
    SysPropBase* const second = &SysPropWatcher::createSysProp<std::string>("debug.test.order", "");
    ASSERT_EQ(SysPropWatcher::mProps.size(), before + 2);
    EXPECT_EQ(SysPropWatcher::mProps[before], first);
    EXPECT_EQ(SysPropWatcher::mProps[before + 1], second);
}

TEST(Property, IsLookedUpUntilItExistsAndThenNoMore) {
    SysProp<int>& late = SysPropWatcher::createSysProp<int>("debug.test.late", 1);
    SysPropWatcher::forceReadAllProps();
    EXPECT_EQ(late.getValue(), 1);
    doubles::setProperty("debug.test.late", "2");
    EXPECT_EQ(late.getValue(), 1) << "nothing changes without a re-read";
    SysPropWatcher::forceReadAllProps();
    EXPECT_EQ(late.getValue(), 2);
    EXPECT_NE(late.mPropInfo, nullptr);
}

TEST(Watcher, PublishesBatchesToListenersAfterReReading) {
    SysProp<int>& first = SysPropWatcher::createSysProp<int>("debug.test.first", 0);
    SysProp<std::string>& second = SysPropWatcher::createSysProp<std::string>("debug.test.second", "");
    static std::atomic<int> passes{0};
    static std::atomic<bool> sawOldValue{false};
    static std::vector<int> order;  // written under the registry's lock only
    SysPropWatcher::addPropChangedListener([&first, &second] {
        order.push_back(1);
        if (std::to_string(first.getValue()) != second.getValue()) {
            sawOldValue = true;
        }
    });
    SysPropWatcher::addPropChangedListener([] {
        order.push_back(2);
        ++passes;
    });
    SysPropWatcher::init(GENERATION, 1ms);
    SysPropWatcher::init("debug.test.other", 0ms);  // without effect
    doubles::setProperty("debug.test.other", "1");

    doubles::setProperty("debug.test.first", "1");
    doubles::setProperty("debug.test.second", "1");
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(passes, 0) << "nothing is read before the generation property exists";

    for (int generation = 1; generation <= 5; ++generation) {
        const std::string text = std::to_string(generation);
        doubles::setProperty("debug.test.first", text);
        doubles::setProperty("debug.test.second", text);
        doubles::setProperty(GENERATION, "same");  // the serial counts, not the text
        ASSERT_TRUE(eventually([&] { return passes >= generation; })) << "publication " << generation;
        EXPECT_EQ(first.getValue(), generation);
        EXPECT_EQ(second.getValue(), text);
    }
    EXPECT_FALSE(sawOldValue);

    doubles::setProperty("debug.test.first", "77");
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(first.getValue(), 5) << "unpublished";
    EXPECT_EQ(passes, 5);

    doubles::failPropertyWaits(3);
    doubles::setProperty(GENERATION, "again");
    ASSERT_TRUE(eventually([] { return passes >= 6; })) << "a failed wait is called again";
    EXPECT_EQ(first.getValue(), 77);
    // Read while no listener runs: forcing a re-read takes the registry's lock and runs none.
    SysPropWatcher::forceReadAllProps();
    EXPECT_EQ(passes, 6);
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_EQ(order[i], i % 2 == 0 ? 1 : 2);
    }
}

TEST(Watcher, PropertiesMayBeReadWhileTheyChange) {
    SysProp<int>& number = SysPropWatcher::createSysProp<int>("debug.test.n", 0);
    SysProp<std::string>& text = SysPropWatcher::createSysProp<std::string>("debug.test.s", "a");
    std::atomic<bool> isDone{false};
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            doubles::setProperty("debug.test.n", i % 2 == 0 ? "11" : "22");
            doubles::setProperty("debug.test.s", i % 2 == 0 ? "a" : std::string(80, 'b'));
            SysPropWatcher::forceReadAllProps();
        }
        isDone = true;
    });
    while (!isDone) {
        const int n = number.getValue();
        EXPECT_TRUE(n == 0 || n == 11 || n == 22) << n;
        const std::string s = text.getValue();
        EXPECT_TRUE(s == "a" || s == std::string(80, 'b')) << s;
    }
    writer.join();
}

}  // namespace
