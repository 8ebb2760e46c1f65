#include <android/log.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <thread>

#include "log/LogLevel.h"
#include "platform/ChildProcess.h"

namespace platform {
namespace {

struct Logged {
    std::vector<std::string> writes;  ///< what each write to standard error brought
    int result = 0;                   ///< the exit code of the process
    std::string pid;                  ///< its id, as the prefix shows it
};

/// Runs `work` in a process whose standard error keeps writes apart, since this process must not log: the
/// level is read from the environment only once.
Logged runLogged(const char* level, const std::function<int()>& work) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const pid_t child = startChild([&] {
        setenv("KORDANIX_LOG", level, 1);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        return work();
    });
    close(ends[1]);
    Logged logged;
    std::array<char, 65536> bytes;
    for (ssize_t size = 0; (size = read(ends[0], bytes.data(), bytes.size())) > 0;) {
        logged.writes.emplace_back(bytes.data(), static_cast<std::size_t>(size));
    }
    close(ends[0]);
    logged.result = waitForChild(child);
    logged.pid = std::to_string(child);
    logged.pid.insert(0, logged.pid.size() < 5 ? 5 - logged.pid.size() : 0, ' ');
    return logged;
}

TEST(LogLevelTest, IsALetterOrAWord) {
    const std::vector<std::pair<const char*, int>> levels = {
        {"V", ANDROID_LOG_VERBOSE}, {"verbose", ANDROID_LOG_VERBOSE}, {"d", ANDROID_LOG_DEBUG},
        {"I", ANDROID_LOG_INFO},    {"WARN", ANDROID_LOG_WARN},       {"Error", ANDROID_LOG_ERROR},
        {"f", ANDROID_LOG_FATAL},   {"silent", ANDROID_LOG_SILENT},   {"", ANDROID_LOG_INFO},
        {"x", ANDROID_LOG_INFO},    {"errors", ANDROID_LOG_INFO},     {nullptr, ANDROID_LOG_INFO},
    };
    for (const auto& [text, level] : levels) {
        EXPECT_EQ(logLevelFrom(text), level) << (text == nullptr ? "(null)" : text);
    }
}

TEST(LogTest, EveryLineHasThePrefixAndEveryMessageIsOneWrite) {
    const Logged logged = runLogged("verbose", [] {
        errno = ENOENT;
        int written = __android_log_print(ANDROID_LOG_ERROR, "Kordanix", "%s:%d", "text", 7);
        written += __android_log_print(ANDROID_LOG_INFO, "abc", "one\n\ntwo\n");
        written += __android_log_print(ANDROID_LOG_VERBOSE, "longer than eight", "%s", "");
        written += __android_log_print(99, nullptr, "?");
        return written == 4 && errno == ENOENT ? 0 : 1;
    });
    EXPECT_EQ(logged.result, 0);
    const std::string end = "(" + logged.pid + "): ";
    const std::vector<std::string> expected = {
        "E/Kordanix" + end + "text:7\n",
        "I/abc     " + end + "one\nI/abc     " + end + "\nI/abc     " + end + "two\n",
        "V/longer than eight" + end + "\n",
        "?/        " + end + "?\n",
    };
    EXPECT_EQ(logged.writes, expected);
}

TEST(LogTest, LongMessagesAreCutAndManyLinesKept) {
    const Logged logged = runLogged("I", [] {
        __android_log_print(ANDROID_LOG_INFO, "t", "%s", std::string(5000, 'x').c_str());
        __android_log_print(ANDROID_LOG_INFO, "t", "%s", std::string(1023, '\n').c_str());
        return 0;
    });
    const std::string prefix = "I/t       (" + logged.pid + "): ";
    ASSERT_EQ(logged.writes.size(), 2U);
    EXPECT_EQ(logged.writes[0], prefix + std::string(1023, 'x') + "\n");
    EXPECT_EQ(logged.writes[1].size(), 1023 * (prefix.size() + 1));
    EXPECT_EQ(std::count(logged.writes[1].begin(), logged.writes[1].end(), '\n'), 1023);
}

TEST(LogTest, LevelFilters) {
    const std::vector<std::pair<const char*, std::string>> levels = {
        {"verbose", "VDIWEF"}, {"D", "DIWEF"}, {"nonsense", "IWEF"}, {"W", "WEF"}, {"fatal", "F"}, {"S", ""}};
    for (const auto& [level, expected] : levels) {
        const std::size_t count = expected.size();
        const Logged logged = runLogged(level, [count] {
            std::size_t written = 0;
            for (int priority = ANDROID_LOG_VERBOSE; priority < ANDROID_LOG_SILENT; ++priority) {
                written += __android_log_print(priority, "t", "m") == 1 ? 1 : 0;
            }
            return written == count ? 0 : 1;
        });
        EXPECT_EQ(logged.result, 0) << level;
        std::string letters;
        for (const std::string& line : logged.writes) {
            letters += line[0];
        }
        EXPECT_EQ(letters, expected) << level;
    }
}

TEST(LogTest, ThreadsDoNotMixTheirLines) {
    const Logged logged = runLogged("I", [] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([i] {
                for (int n = 0; n < 100; ++n) {
                    __android_log_print(ANDROID_LOG_INFO, "t", "%s",
                                        std::string(200, static_cast<char>('a' + i)).c_str());
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        return 0;
    });
    ASSERT_EQ(logged.writes.size(), 400U);
    const std::size_t start = std::string("I/t       (" + logged.pid + "): ").size();
    for (const std::string& line : logged.writes) {
        ASSERT_EQ(line.substr(start), std::string(200, line[start]) + "\n");
    }
}

TEST(LogTest, ClosedStandardErrorIsAnErrorNumber) {
    const Logged logged = runLogged("I", [] {
        close(STDERR_FILENO);
        return __android_log_print(ANDROID_LOG_ERROR, "t", "m") == -EBADF ? 0 : 1;
    });
    EXPECT_EQ(logged.result, 0);
}

}  // namespace
}  // namespace platform
