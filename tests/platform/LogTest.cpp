#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <android/log.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace platform {
namespace {

struct Logged {
    std::vector<std::string> writes;  ///< what each write to standard error brought
    int result = 0;                   ///< the exit code of the process
    std::string source;               ///< the end of its prefix: its id
};

/// Runs `work` in a process whose standard error keeps writes apart, since this process must not log: the
/// level is read from the environment only once.
Logged runLogged(const char* level, const std::function<int()>& work) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    support::ChildProcess child([&] {
        setenv("KORDANIX_LOG", level, 1);
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        return work();
    });
    close(ends[1]);
    Logged logged;
    std::string bytes(65536, '\0');
    for (ssize_t size = 0; (size = read(ends[0], bytes.data(), bytes.size())) > 0;) {
        logged.writes.push_back(bytes.substr(0, static_cast<std::size_t>(size)));
    }
    close(ends[0]);
    logged.result = child.wait();
    const std::string pid = std::to_string(child.id());
    logged.source = "(" + std::string(pid.size() < 5 ? 5 - pid.size() : 0, ' ') + pid + "): ";
    return logged;
}

TEST(LogTest, EveryLineHasThePrefixAndEveryMessageIsOneWrite) {
    const Logged logged = runLogged("verbose", [] {
        errno = ENOENT;
        int written = __android_log_print(ANDROID_LOG_ERROR, "Kordanix", "%s:%d", "text", 7);
        written += __android_log_print(ANDROID_LOG_INFO, "abc", "one\n\ntwo\n");
        written += __android_log_print(ANDROID_LOG_VERBOSE, "longer than eight", "%s", "");
        written += __android_log_print(99, nullptr, "?");
        written += __android_log_print(ANDROID_LOG_INFO, "t", "%s", std::string(5000, 'x').c_str());
        return written == 5 && errno == ENOENT ? 0 : 1;
    });
    EXPECT_EQ(logged.result, 0);
    const std::string& end = logged.source;
    const std::vector<std::string> expected = {
        "E/Kordanix" + end + "text:7\n",
        "I/abc     " + end + "one\nI/abc     " + end + "\nI/abc     " + end + "two\n",
        "V/longer than eight" + end + "\n",
        "?/        " + end + "?\n",
        "I/t       " + end + std::string(1023, 'x') + "\n",
    };
    EXPECT_EQ(logged.writes, expected);
}

TEST(LogTest, AFileTakesTheMessagesInsteadAndWhatIsNoFileIsNoLog) {
    const support::TemporaryDirectory folder;
    ASSERT_TRUE(folder.shell("ln -s log link; mkfifo fifo"));
    for (const char* const name : {"link", "fifo"}) {
        const Logged logged = runLogged("I", [&] {
            setenv("KORDANIX_LOG_FILE", folder.path(name).c_str(), 1);
            __android_log_print(ANDROID_LOG_INFO, "t", "one");
            return __android_log_print(ANDROID_LOG_INFO, "t", "two");
        });
        EXPECT_EQ(logged.result, 1);
        const std::string lines = "I/t       " + logged.source + "one\nI/t       " + logged.source + "two\n";
        EXPECT_EQ(support::readFile(folder.path("log")), name[0] == 'l' ? lines : "");
        ASSERT_EQ(logged.writes.size(), name[0] == 'l' ? 0U : 3U);
        if (name[0] == 'f') {
            EXPECT_THAT(logged.writes[0], testing::HasSubstr("fifo: is not a regular file"));
            EXPECT_EQ(logged.writes[1] + logged.writes[2], lines);
        }
        folder.shell("rm -f log");
    }
}

void useFile(const std::string& path, int flags) {
    close(STDERR_FILENO);
    if (open(path.c_str(), O_WRONLY | O_CREAT | flags, 0600) != STDERR_FILENO) {
        _exit(1);
    }
}

TEST(LogTest, StandardErrorDoesNoHarmHoweverItIs) {
    const support::TemporaryDirectory folder;
    const std::string path = folder.path("save.game");
    int ends[2];
    const struct {
        const char* name;
        std::function<void()> prepare;
        int error;
    } cases[] = {
        {"a file that must not grow",
         [&] {
             useFile(path, O_APPEND);
             const rlimit none = {0, 0};
             setrlimit(RLIMIT_FSIZE, &none);
         },
         EFBIG},
        {"a pipe without a reader", [&] { close(ends[0]); }, EPIPE},
        {"a pipe that nobody reads",
         [] {
             fcntl(STDERR_FILENO, F_SETFL, O_NONBLOCK);
             const std::string block(4096, 'x');
             while (write(STDERR_FILENO, block.data(), block.size()) > 0) {
             }
             fcntl(STDERR_FILENO, F_SETFL, 0);
         },
         EAGAIN},
        {"a file of the program's", [&] { useFile(path, 0); }, EBADF},
        {"closed", [] { close(STDERR_FILENO); }, EBADF},
    };
    for (const auto& standardError : cases) {
        support::ChildProcess program([&] {
            if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0 || close(ends[1]) != 0) {
                return 1;
            }
            standardError.prepare();
            return -__android_log_print(ANDROID_LOG_ERROR, "t", "text");
        });
        EXPECT_EQ(program.wait(std::chrono::seconds(10)), standardError.error) << standardError.name;
    }
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

TEST(LogTest, LevelFilters) {
    const auto logAll = [] {
        for (int priority = ANDROID_LOG_VERBOSE; priority < ANDROID_LOG_SILENT; ++priority) {
            __android_log_print(priority, "t", "m");
        }
        return 0;
    };
    for (const auto& [level, expected] : {std::pair("verbose", "VDIWEF"),
                                          {"D", "DIWEF"},
                                          {"nonsense", "IWEF"},
                                          {"W", "WEF"},
                                          {"Error", "EF"},
                                          {"s", ""}}) {
        std::string letters;
        for (const std::string& line : runLogged(level, logAll).writes) {
            letters += line[0];
        }
        EXPECT_EQ(letters, expected) << level;
    }
}

}  // namespace
}  // namespace platform
