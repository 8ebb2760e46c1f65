#include <android/log.h>
#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "log/LogLevel.h"

namespace platform {
namespace {

struct Level {
    char letter;
    const char* word;
};

/// By priority, from ANDROID_LOG_VERBOSE on.
constexpr std::array<Level, 7> LEVELS = {{
    {'V', "verbose"},
    {'D', "debug"},
    {'I', "info"},
    {'W', "warn"},
    {'E', "error"},
    {'F', "fatal"},
    {'S', "silent"},
}};

/// A message's room, as in liblog; what does not fit is cut.
constexpr std::size_t MESSAGE_SIZE = 1024;
/// Room for the prefixed lines of all but unusual messages, which then need no allocation.
constexpr std::size_t OUTPUT_SIZE = 2048;

char letterOf(int priority) {
    const int index = priority - ANDROID_LOG_VERBOSE;
    return index >= 0 && index < static_cast<int>(LEVELS.size())
               ? LEVELS[static_cast<std::size_t>(index)].letter
               : '?';
}

/// Collects text for one write: on the stack while it fits, then on the heap.
class Output {
public:
    void append(std::string_view text) {
        if (mOverflow.empty() && mSize + text.size() <= mBuffer.size()) {
            std::copy(text.begin(), text.end(), mBuffer.begin() + static_cast<std::ptrdiff_t>(mSize));
            mSize += text.size();
            return;
        }
        if (mOverflow.empty()) {
            mOverflow.assign(mBuffer.data(), mSize);
        }
        mOverflow += text;
    }

    std::string_view text() const {
        return mOverflow.empty() ? std::string_view(mBuffer.data(), mSize) : std::string_view(mOverflow);
    }

private:
    std::array<char, OUTPUT_SIZE> mBuffer = {};
    std::size_t mSize = 0;
    std::string mOverflow;
};

/// Writes it all, in one piece as far as the system allows. Returns 0 or an error number.
int writeTo(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        text.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return 0;
}

/// To the end of the file that KORDANIX_LOG_FILE names, else to standard error. The file is opened for each
/// message: an application may close descriptors that it does not know and get their numbers for its own.
int writeToLog(std::string_view text) {
    // Read once: the application may change its environment later.
    static const char* const name = std::getenv("KORDANIX_LOG_FILE");  // NOLINT(concurrency-mt-unsafe)
    static const std::string& path = *new std::string(name == nullptr ? "" : name);  // also used at exit
    if (path.empty()) {
        return writeTo(STDERR_FILENO, text);
    }
    const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) {
        return errno;
    }
    const int error = writeTo(file, text);
    close(file);
    return error;
}

/// The message in logcat's brief format: every line under the same prefix, an end of line at the end of
/// the message making no further one.
int writeMessage(int priority, const char* tag, std::string_view message) {
    std::array<char, 128> prefix = {};
    const int length = std::snprintf(prefix.data(), prefix.size(), "%c/%-8.80s(%5d): ", letterOf(priority),
                                     tag == nullptr ? "" : tag, static_cast<int>(getpid()));
    const std::string_view start(prefix.data(), static_cast<std::size_t>(std::max(length, 0)));
    Output output;
    do {
        const std::string_view line = message.substr(0, message.find('\n'));
        message.remove_prefix(std::min(line.size() + 1, message.size()));
        output.append(start);
        output.append(line);
        output.append("\n");
    } while (!message.empty());
    return writeToLog(output.text());
}

}  // namespace

android_LogPriority logLevelFrom(const char* text) {
    for (std::size_t i = 0; text != nullptr && i < LEVELS.size(); ++i) {
        const std::string letter(1, LEVELS[i].letter);
        if (strcasecmp(text, letter.c_str()) == 0 || strcasecmp(text, LEVELS[i].word) == 0) {
            return static_cast<android_LogPriority>(ANDROID_LOG_VERBOSE + static_cast<int>(i));
        }
    }
    return ANDROID_LOG_INFO;
}

}  // namespace platform

// NOLINTNEXTLINE(bugprone-reserved-identifier): the platform's name
int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    // Read once: the application may change its environment later.
    static const int level =
        platform::logLevelFrom(std::getenv("KORDANIX_LOG"));  // NOLINT(concurrency-mt-unsafe): see above
    if (prio < level) {
        return 0;
    }
    const int callersErrno = errno;
    std::array<char, platform::MESSAGE_SIZE> message = {};
    va_list arguments;
    va_start(arguments, fmt);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start() stands above
    const int length = std::vsnprintf(message.data(), message.size(), fmt, arguments);
    va_end(arguments);
    int error = EINVAL;
    if (length >= 0) {
        const std::size_t size = std::min(static_cast<std::size_t>(length), message.size() - 1);
        error = platform::writeMessage(prio, tag, std::string_view(message.data(), size));
    }
    errno = callersErrno;
    return error == 0 ? 1 : -error;
}
