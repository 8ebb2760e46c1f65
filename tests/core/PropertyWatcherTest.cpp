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
    for (int i = 0; i < 5000 && !condition(); ++i) {
        std::this_thread::sleep_for(1ms);
    }
    return condition();
}

void write(const std::string& name, const std::string& text) {
    doubles::setProperty("debug.test." + name, text);
    SysPropWatcher::forceReadAllProps();
}

TEST(Property, BooleansAreExactlyTrueOrFalse) {
    SysProp<bool>& isFalse = SysPropWatcher::createSysProp<bool>("debug.test.bool", false);
    SysProp<bool>& isTrue = SysPropWatcher::createSysProp<bool>("debug.test.bool", true);
    EXPECT_TRUE(!isFalse.getValue() && isTrue.getValue());
    for (const char* const text : {"TRUE", "1", "true", "0", "", "true ", " true", "false", "False"}) {
        write("bool", text);
        EXPECT_EQ(isFalse.getValue(), text == std::string("true")) << "'" << text << "'";
        EXPECT_EQ(isTrue.getValue(), text != std::string("false")) << "'" << text << "'";
    }
}

TEST(Property, IntegersAreSignedDecimalsOfWhichTheLowBitsCount) {
    const std::pair<const char*, int> cases[] = {{"42", 42},        {"   42", 42},
                                                 {"-3", -3},        {"+7", 7},
                                                 {"7abc", 7},       {"abc", 99},
                                                 {"", 99},          {"-", 99},
                                                 {"0x10", 0},       {"1.9", 1},
                                                 {"4294967297", 1}, {"4278224127", -16743169},
                                                 {"010", 10},       {"2147483648", -2147483647 - 1}};
    SysProp<int>& number = SysPropWatcher::createSysProp<int>("debug.test.int", 99);
    SysProp<core::RenderingApiType>& api = SysPropWatcher::createSysProp<core::RenderingApiType>(
        "debug.test.int", static_cast<core::RenderingApiType>(99));
    for (const auto& [text, value] : cases) {
        write("int", text);
        EXPECT_EQ(number.getValue(), value) << "'" << text << "'";
        EXPECT_EQ(static_cast<int>(api.getValue()), value) << "'" << text << "'";
    }
}

TEST(Property, IsRegisteredInOrderOfCreationAndLookedUpUntilItExists) {
    const std::size_t before = SysPropWatcher::mProps.size();
    EXPECT_GT(before, 0U) << "the library's own";
    SysProp<int>& late = SysPropWatcher::createSysProp<int>("debug.test.late", 1);
    SysPropBase* const second = &SysPropWatcher::createSysProp<std::string>("debug.test.late", "");
    ASSERT_EQ(SysPropWatcher::mProps.size(), before + 2);
    EXPECT_TRUE(SysPropWatcher::mProps[before] == &late && SysPropWatcher::mProps[before + 1] == second);
    SysPropWatcher::forceReadAllProps();
    doubles::setProperty("debug.test.late", "2");
    EXPECT_EQ(late.getValue(), 1) << "nothing changes without a re-read";
    SysPropWatcher::forceReadAllProps();
    EXPECT_EQ(late.getValue(), 2);
    EXPECT_NE(late.mPropInfo, nullptr);
    const unsigned lookups = doubles::propertyLookups();
    late.read();
    EXPECT_EQ(doubles::propertyLookups(), lookups) << "once it exists it is looked up no more";
    EXPECT_EQ(SysPropWatcher::createSysProp<int>("debug.test.late", 1).getValue(), 2) << "what is there";
}

TEST(Watcher, PublishesBatchesToListenersAfterReReading) {
    constexpr const char* GENERATION = "debug.test.generation";
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
    doubles::failPropertyWaits(3);
    std::this_thread::sleep_for(30ms);
    EXPECT_EQ(first.getValue(), 5) << "unpublished";
    EXPECT_EQ(passes, 5) << "a failed wait is no publication";
    doubles::setProperty(GENERATION, "again");
    ASSERT_TRUE(eventually([] { return passes >= 6; })) << "a failed wait is called again";
    EXPECT_EQ(first.getValue(), 77);
    // Read while no listener runs: forcing a re-read takes the registry's lock and runs none.
    SysPropWatcher::forceReadAllProps();
    EXPECT_EQ(passes, 6);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 1, 2, 1, 2, 1, 2, 1, 2, 1, 2}));
}

TEST(Watcher, PropertiesMayBeReadWhileTheyChange) {
    SysProp<int>& number = SysPropWatcher::createSysProp<int>("debug.test.n", 0);
    SysProp<std::string>& text = SysPropWatcher::createSysProp<std::string>("debug.test.s", "a");
    std::atomic<bool> isDone{false};
    std::thread writer([&] {
        for (int i = 0; i < 2000; ++i) {
            doubles::setProperty("debug.test.n", i % 2 == 0 ? "11" : "22");
            write("s", i % 2 == 0 ? "a" : std::string(80, 'b'));
        }
        isDone = true;
    });
    while (!isDone) {
        EXPECT_THAT(number.getValue(), testing::AnyOf(0, 11, 22));
        EXPECT_THAT(text.getValue(), testing::AnyOf("a", std::string(80, 'b')));
    }
    writer.join();
}

}  // namespace
