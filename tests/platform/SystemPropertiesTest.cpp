#include "properties/SystemProperties.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <android/log.h>
#include <gmock/gmock.h>
#include <sys/system_properties.h>
#include <sys/time.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <thread>

static std::atomic<int> gLoggedErrors = 0;

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

int setInAWhile(const char* name, const char* value) {
    std::this_thread::sleep_for(milliseconds(30));
    return __system_property_set(name, value) == 0 ? 0 : 1;
}

class SystemPropertiesTest : public testing::Test {
protected:
    SystemPropertiesTest() {
        changeRuntimeDirectory(mDirectory.path());
        EXPECT_EQ(__system_property_set("test.value", "first"), 0);
        mProperty = __system_property_find("test.value");
    }

    /// Waits for another process's write; the time from then on.
    milliseconds waitForWrite(const prop_info* pi) const {
        const std::uint32_t serial =
            pi == nullptr ? __system_property_area_serial() : __system_property_serial(pi);
        const Clock::time_point start = Clock::now();
        support::ChildProcess writer([] { return setInAWhile("test.value", "woken"); });
        std::uint32_t next = serial;
        EXPECT_TRUE(__system_property_wait(pi, serial, &next, nullptr));
        const auto time = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
        EXPECT_NE(next, serial);
        EXPECT_EQ(readProperty(mProperty).value, "woken");
        EXPECT_EQ(writer.wait(), 0);
        return time - milliseconds(30);
    }

    const support::TemporaryDirectory mDirectory;
    const std::string mPath = mDirectory.path("properties");
    const prop_info* mProperty = nullptr;
};

TEST_F(SystemPropertiesTest, WithoutAFileThereIsNothingButAWaitForOne) {
    std::filesystem::remove(mPath);
    EXPECT_EQ(readProperty(mProperty).value, "first") << "what was read stays";
    const support::TemporaryDirectory empty;
    changeRuntimeDirectory(empty.path());
    ASSERT_TRUE(empty.shell("echo not properties >properties"));
    const int logged = gLoggedErrors;
    EXPECT_EQ(__system_property_find("test.value"), nullptr);
    EXPECT_EQ(__system_property_find("test.value"), nullptr);
    EXPECT_EQ(gLoggedErrors, logged + 1) << "the damaged file is to be reported, once";
    std::filesystem::remove(empty.path("properties"));
    char value[PROP_VALUE_MAX] = "left";
    EXPECT_EQ(__system_property_get("test.value", value), 0);
    EXPECT_STREQ(value, "");
    EXPECT_EQ(readProperty(mProperty).value, "");
    EXPECT_EQ(__system_property_area_serial(), 0U);
    EXPECT_EQ(__system_property_foreach([](const prop_info*, void*) {}, nullptr), -1);

    std::uint32_t serial = 7;
    const support::ChildProcess writer([] { return setInAWhile("test.other", "x"); });
    EXPECT_TRUE(__system_property_wait(nullptr, 0, &serial, nullptr));
    EXPECT_NE(__system_property_find("test.other"), nullptr);
}

TEST_F(SystemPropertiesTest, NamesAndValuesOutsideTheLimitsAreRefused) {
    const std::string longest(4096, 'v');
    char value[PROP_VALUE_MAX + 1] = {};
    value[PROP_VALUE_MAX] = '!';
    EXPECT_EQ(__system_property_set("test.value", longest.c_str()), 0);
    EXPECT_EQ(__system_property_get("test.value", value), 91);
    EXPECT_EQ(std::string(value) + value[PROP_VALUE_MAX], longest.substr(0, 91) + '!');
    EXPECT_EQ(readProperty(mProperty).name, "test.value");
    EXPECT_EQ(readProperty(mProperty).value, longest);
    EXPECT_EQ(setProperty("ro.test", "first"), "");
    EXPECT_THAT(setProperty("ro.test", "second"), testing::HasSubstr("read-only"));

    errno = 77;
    const std::uint32_t serial = __system_property_area_serial();
    const std::string longer = longest + 'v';
    for (const auto& [name, text] :
         {std::pair("test.value", longer.c_str()), {"test.value", nullptr}, {"a..b", "x"}, {nullptr, "x"}}) {
        EXPECT_EQ(__system_property_set(name, text), -1);
    }
    EXPECT_EQ(__system_property_area_serial(), serial);
    std::filesystem::remove(mPath);
    EXPECT_EQ(__system_property_serial(mProperty), readProperty(mProperty).serial);
    EXPECT_EQ(errno, 77) << "the caller's errno";
}

TEST_F(SystemPropertiesTest, WaitersAreWokenByOtherProcessesAlsoByTheSameValue) {
    std::uint32_t serial = 0;
    ASSERT_TRUE(__system_property_wait(mProperty, 0, &serial, nullptr)) << "the first wait returns at once";
    EXPECT_EQ(serial, readProperty(mProperty).serial);
    std::vector<milliseconds> times;
    for (int i = 0; i < 7; ++i) {
        times.push_back(waitForWrite(i % 2 == 0 ? mProperty : nullptr));
    }
    std::sort(times.begin(), times.end());
    EXPECT_LT(times[0], milliseconds(20)) << "nobody woke the waiters";
    EXPECT_LT(times[3], milliseconds(50)) << "on a busy machine as well";
}

TEST_F(SystemPropertiesTest, WaitsLastUntilTheirTimeoutWhateverWakesThem) {
    // A signal every millisecond interrupts the sleep again and again, and so do writes of another property.
    signal(SIGALRM, [](int) {});
    const itimerval everyMillisecond = {{0, 1000}, {0, 1000}};
    const itimerval never = {};
    ASSERT_EQ(setitimer(ITIMER_REAL, &everyMillisecond, nullptr), 0);
    std::thread writer([] {
        for (int i = 0; i < 20; ++i) {
            __system_property_set("test.other", "again");
        }
    });
    const std::uint32_t serial = __system_property_serial(mProperty);
    const timespec timeout = {0, 50000000};
    const Clock::time_point start = Clock::now();
    std::uint32_t next = 0;
    EXPECT_FALSE(__system_property_wait(mProperty, serial, &next, &timeout));
    EXPECT_GE(Clock::now() - start, milliseconds(50));
    setitimer(ITIMER_REAL, &never, nullptr);
    writer.join();
    for (const timespec& strange : {timespec{-5, 0}, timespec{0, -1}, timespec{0, 0}}) {
        EXPECT_FALSE(__system_property_wait(mProperty, serial, &next, &strange));
    }
    EXPECT_EQ(next, 0U);
}

#ifndef __SANITIZE_THREAD__  // which takes what this program does for a mistake
// A program that closes what it does not know, and has the number for a file of its own at once.
TEST_F(SystemPropertiesTest, WaitersLeaveTheProgramsDescriptorsAlone) {
    int own[2];
    ASSERT_EQ(pipe(own), 0);
    ASSERT_EQ(write(own[1], "x", 1), 1);
    std::thread program([&] {
        std::this_thread::sleep_for(milliseconds(20));
        for (int number = own[1] + 1; number < own[1] + 20; ++number) {
            dup2(own[0], number);
        }
    });
    waitForWrite(mProperty);
    program.join();
    for (int number = own[1] + 1; number < own[1] + 20; ++number) {
        EXPECT_EQ(close(number), 0) << number;
    }
    char byte = 0;
    EXPECT_EQ(read(own[0], &byte, 1), 1) << "somebody read what is the program's";
    close(own[0]);
    close(own[1]);
}
#endif

}  // namespace
}  // namespace platform
