#include <android/log.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/system_properties.h>
#include <sys/time.h>

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <new>
#include <thread>

#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "properties/SystemProperties.h"

namespace {

std::atomic<int> gLoggedErrors = 0;

}  // namespace

int __android_log_print(int prio, const char*, const char*, ...) {
    gLoggedErrors += prio == ANDROID_LOG_ERROR ? 1 : 0;
    return 1;
}

namespace platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Reading {
    std::string name;
    std::string value;
    std::uint32_t serial = 0;
};

Reading readProperty(const prop_info* pi) {
    Reading reading;
    __system_property_read_callback(
        pi,
        [](void* cookie, const char* name, const char* value, std::uint32_t serial) {
            *static_cast<Reading*>(cookie) = {name, value, serial};
        },
        &reading);
    return reading;
}

int setInChild(const char* name, const char* value, milliseconds delay = milliseconds(0)) {
    return startChild([=] {
        std::this_thread::sleep_for(delay);
        return __system_property_set(name, value) == 0 ? 0 : 1;
    });
}

/// All tests share one runtime directory, since a process keeps the first area that it finds.
class SystemPropertiesTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        mDirectory = std::make_unique<TemporaryDirectory>();
        setenv("KORDANIX_RUNTIME_DIR", mDirectory->path().c_str(), 1);
        checkLifeWithoutArea();
        ASSERT_EQ(__system_property_set("test.value", "first"), 0);
        mProperty = __system_property_find("test.value");
        ASSERT_NE(mProperty, nullptr);
    }
    static void TearDownTestSuite() { mDirectory.reset(); }

    /// Can only be seen before the process has found an area, so it is part of the set-up.
    static void checkLifeWithoutArea() {
        std::ofstream(mDirectory->path("properties")) << "not an area";
        EXPECT_EQ(__system_property_find("test.value"), nullptr);
        EXPECT_EQ(__system_property_find("test.value"), nullptr);
        EXPECT_EQ(gLoggedErrors, 1) << "the damaged file is to be reported, once";
        std::filesystem::remove(mDirectory->path("properties"));

        char value[PROP_VALUE_MAX] = "left";
        EXPECT_EQ(__system_property_find("test.value"), nullptr);
        EXPECT_EQ(__system_property_get("test.value", value), 0);
        EXPECT_STREQ(value, "");
        EXPECT_EQ(__system_property_area_serial(), 0U);
        EXPECT_EQ(__system_property_foreach([](const prop_info*, void*) {}, nullptr), -1);
        EXPECT_EQ(propertyAreaError(), "");

        const timespec timeout = {0, 1000000};
        std::uint32_t serial = 7;
        EXPECT_FALSE(__system_property_wait(nullptr, 0, &serial, &timeout));
        EXPECT_EQ(serial, 7U);
        const pid_t writer = setInChild("test.other", "x", milliseconds(20));
        EXPECT_TRUE(__system_property_wait(nullptr, 0, &serial, nullptr));
        EXPECT_EQ(waitForChild(writer), 0);
        EXPECT_NE(__system_property_find("test.other"), nullptr);
    }

    static std::unique_ptr<TemporaryDirectory> mDirectory;
    static const prop_info* mProperty;
};

std::unique_ptr<TemporaryDirectory> SystemPropertiesTest::mDirectory;
const prop_info* SystemPropertiesTest::mProperty = nullptr;

TEST_F(SystemPropertiesTest, ValuesHaveAtMost91Bytes) {
    const std::string longest(91, 'v');
    EXPECT_EQ(__system_property_set("test.value", longest.c_str()), 0);
    EXPECT_EQ(readProperty(mProperty).value, longest);
    EXPECT_EQ(readProperty(mProperty).name, "test.value");
    char value[PROP_VALUE_MAX];
    EXPECT_EQ(__system_property_get("test.value", value), 91);
    EXPECT_EQ(value, longest);

    const std::uint32_t serial = __system_property_serial(mProperty);
    EXPECT_EQ(__system_property_set("test.value", (longest + "v").c_str()), -1);
    EXPECT_EQ(__system_property_set("test.value", nullptr), -1);
    EXPECT_EQ(readProperty(mProperty).value, longest);
    EXPECT_EQ(__system_property_serial(mProperty), serial);

    EXPECT_EQ(__system_property_set("test.value", ""), 0);
    EXPECT_EQ(readProperty(mProperty).value, "");
    EXPECT_EQ(__system_property_get("test.value", value), 0);
}

TEST_F(SystemPropertiesTest, NamesAreRefusedBeforeAnythingIsWritten) {
    const std::uint32_t serial = __system_property_area_serial();
    for (const char* name : {"", ".a", "a.", "a..b", "a b", "a/b"}) {
        EXPECT_EQ(__system_property_set(name, "x"), -1) << name;
        EXPECT_EQ(__system_property_find(name), nullptr) << name;
    }
    EXPECT_EQ(__system_property_set(nullptr, "x"), -1);
    EXPECT_EQ(__system_property_area_serial(), serial);
}

TEST_F(SystemPropertiesTest, ReadOnlyPropertiesAreWrittenOnce) {
    const std::string name = "ro.test." + std::to_string(getpid());
    EXPECT_EQ(setProperty(name.c_str(), "first"), "");
    EXPECT_THAT(setProperty(name.c_str(), "second"), testing::HasSubstr("read-only"));
    EXPECT_EQ(readProperty(__system_property_find(name.c_str())).value, "first");
}

TEST_F(SystemPropertiesTest, EveryPropertyIsVisitedOnce) {
    std::map<std::string, int> visits;
    EXPECT_EQ(__system_property_foreach(
                  [](const prop_info* pi, void* cookie) {
                      ++(*static_cast<std::map<std::string, int>*>(cookie))[readProperty(pi).name];
                  },
                  &visits),
              0);
    EXPECT_EQ(visits["test.value"], 1);
    EXPECT_EQ(visits["test.other"], 1);
}

TEST_F(SystemPropertiesTest, AWriteOfTheSameValueCounts) {
    ASSERT_EQ(__system_property_set("test.value", "same"), 0);
    std::uint32_t serial = 0;
    ASSERT_TRUE(__system_property_wait(mProperty, 0, &serial, nullptr)) << "the first wait returns at once";
    EXPECT_EQ(serial, readProperty(mProperty).serial);
    const std::uint32_t areaSerial = __system_property_area_serial();
    ASSERT_EQ(waitForChild(setInChild("test.value", "same")), 0);
    EXPECT_NE(__system_property_area_serial(), areaSerial);
    std::uint32_t next = 0;
    ASSERT_TRUE(__system_property_wait(mProperty, serial, &next, nullptr));
    EXPECT_NE(next, serial);
}

TEST_F(SystemPropertiesTest, WaitersAreWokenByOtherProcesses) {
    for (const prop_info* pi : {mProperty, static_cast<const prop_info*>(nullptr)}) {
        const std::uint32_t serial =
            pi == nullptr ? __system_property_area_serial() : __system_property_serial(pi);
        const Clock::time_point start = Clock::now();
        const pid_t writer = setInChild("test.value", "woken", milliseconds(30));
        const timespec timeout = {20, 0};
        std::uint32_t next = 0;
        EXPECT_TRUE(__system_property_wait(pi, serial, &next, &timeout));
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(10)) << "nobody woke the waiter";
        EXPECT_NE(next, serial);
        EXPECT_EQ(readProperty(mProperty).value, "woken");
        EXPECT_EQ(waitForChild(writer), 0);
    }
}

TEST_F(SystemPropertiesTest, WaitsLastUntilTheirTimeoutWhateverWakesThem) {
    // A signal every millisecond interrupts the sleep again and again.
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval everyMillisecond = {{0, 1000}, {0, 1000}};
    const itimerval never = {};
    ASSERT_EQ(setitimer(ITIMER_REAL, &everyMillisecond, nullptr), 0);
    std::uint32_t serial = __system_property_serial(mProperty);
    const timespec timeout = {0, 50000000};
    const Clock::time_point start = Clock::now();
    std::uint32_t next = 0;
    EXPECT_FALSE(__system_property_wait(mProperty, serial, &next, &timeout));
    EXPECT_GE(Clock::now() - start, milliseconds(50));
    EXPECT_EQ(next, 0U);
    setitimer(ITIMER_REAL, &never, nullptr);

    // Writes of other properties are none of this waiter's business.
    std::thread writer([] {
        for (int i = 0; i < 20; ++i) {
            __system_property_set("test.other", "again");
        }
    });
    EXPECT_FALSE(__system_property_wait(mProperty, serial, &next, &timeout));
    writer.join();
    for (const timespec& strange : {timespec{-5, 0}, timespec{0, -1}, timespec{0, 0}}) {
        EXPECT_FALSE(__system_property_wait(mProperty, serial, &next, &strange));
    }
}

TEST_F(SystemPropertiesTest, NoTornValueInTenThousandWrites) {
    ASSERT_EQ(__system_property_set("test.value", ""), 0);
    const std::uint32_t first = __system_property_serial(mProperty);
    // Each value can be told from its serial: the reader is to see value and serial of one write.
    const auto valueAt = [first](std::uint32_t serial) {
        const std::uint32_t i = serial - first;
        return std::string(i % 92, static_cast<char>('a' + i % 26));
    };
    // The writer goes on until the reader has seen enough of its values, also where both share a core.
    void* memory = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    auto& isEnough = *new (memory) std::atomic<bool>(false);
    const pid_t writer = startChild([&] {
        for (std::uint32_t i = 1; i <= 10000 || !isEnough; ++i) {
            if (__system_property_set("test.value", valueAt(first + i).c_str()) != 0) {
                return 1;
            }
        }
        return __system_property_set("test.value", "END") == 0 ? 0 : 1;
    });
    std::uint32_t serial = first;
    int changes = 0;
    bool isWhole = true;
    Reading reading;
    for (; isWhole && reading.value != "END"; serial = reading.serial) {
        reading = readProperty(mProperty);
        isWhole =
            reading.serial >= serial && (reading.value == "END" || reading.value == valueAt(reading.serial));
        changes += reading.serial != serial ? 1 : 0;
        isEnough = changes >= 100 || !isWhole;
    }
    EXPECT_TRUE(isWhole) << "\"" << reading.value << "\" is not the value of write "
                         << reading.serial - first;
    EXPECT_EQ(waitForChild(writer), 0);
    EXPECT_GT(readProperty(mProperty).serial, first + 10000);
    munmap(memory, 4096);
}

TEST_F(SystemPropertiesTest, ThreadsOfOneProcessWriteTogether) {
    const std::uint32_t areaSerial = __system_property_area_serial();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i] {
            const std::string name = "test.thread." + std::to_string(i);
            for (int n = 0; n < 50; ++n) {
                __system_property_set(name.c_str(), std::to_string(n).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(__system_property_area_serial(), areaSerial + 200) << "two writers at once";
    for (int i = 0; i < 4; ++i) {
        const std::string name = "test.thread." + std::to_string(i);
        EXPECT_EQ(readProperty(__system_property_find(name.c_str())).value, "49");
    }
}

TEST_F(SystemPropertiesTest, ForkedChildGoesOnReadingAndWriting) {
    ASSERT_EQ(__system_property_set("test.value", "parent"), 0);
    int toChild[2];
    ASSERT_EQ(pipe(toChild), 0);
    const pid_t child = startChild([&toChild] {
        char byte = 0;
        (void)!read(toChild[0], &byte, 1);
        const bool isSeen = readProperty(mProperty).value == "after the fork";
        return isSeen && __system_property_set("test.value", "child") == 0 ? 0 : 1;
    });
    ASSERT_EQ(__system_property_set("test.value", "after the fork"), 0);
    ASSERT_EQ(write(toChild[1], "x", 1), 1);
    EXPECT_EQ(waitForChild(child), 0);
    EXPECT_EQ(readProperty(mProperty).value, "child");
    close(toChild[0]);
    close(toChild[1]);
}

}  // namespace
}  // namespace platform
