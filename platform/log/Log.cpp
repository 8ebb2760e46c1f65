#include "log/LogLevel.h"
#include "log/LogOutput.h"

#include <android/log.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

namespace platform {
namespace {

struct Level {
    char letter;
    const char* word;
};

/// In the order of the priorities, from ANDROID_LOG_VERBOSE on.
constexpr std::array<Level, 7> LEVELS = {{
    {'V', "verbose"},
    {'D', "debug"},
    {'I', "info"},
    {'W', "warn"},
    {'E', "error"},
    {'F', "fatal"},
    {'S', "silent"},
}};

/// The size of a message, as in liblog; longer ones are cut.
constexpr std::size_t MESSAGE_SIZE = 1024;
constexpr std::size_t PREFIX_SIZE = 128;

char letterOf(int priority) {
    const int index = priority - ANDROID_LOG_VERBOSE;
    return index >= 0 && index < static_cast<int>(LEVELS.size())
               ? LEVELS[static_cast<std::size_t>(index)].letter
               : '?';
}

/// Collects lines for one write; when it is full it writes earlier.
class Output {
public:
    /// Room for any one line, and usually for all lines of a message.
    static constexpr std::size_t SIZE = 2 * MESSAGE_SIZE;
    static_assert(SIZE >= PREFIX_SIZE + MESSAGE_SIZE);

    void addLine(std::string_view prefix, std::string_view text) {
        if (mSize + prefix.size() + text.size() + 1 > mBuffer.size()) {
            flush();
        }
        append(prefix);
        append(text);
        append("\n");
    }

    /// Returns 0 or the first error number of all writes so far.
    int flush() {
        const int error = writeToLog({mBuffer.data(), mSize});
        mError = mError == 0 ? error : mError;
        mSize = 0;
        return mError;
    }

private:
    void append(std::string_view text) {
        std::copy(text.begin(), text.end(), mBuffer.begin() + static_cast<std::ptrdiff_t>(mSize));
        mSize += text.size();
    }

    std::array<char, SIZE> mBuffer;
    std::size_t mSize = 0;
    int mError = 0;
};

/// Writes the message in logcat's brief format: the same prefix before every line, and no empty line for an
/// end of line at the end of the message.
int writeMessage(int priority, const char* tag, std::string_view message) {
    std::array<char, PREFIX_SIZE> prefix = {};
    const int length = std::snprintf(prefix.data(), prefix.size(), "%c/%-8.80s(%5d): ", letterOf(priority),
                                     tag == nullptr ? "" : tag, static_cast<int>(getpid()));
    const std::string_view start(prefix.data(), static_cast<std::size_t>(std::max(length, 0)));
    Output output;
    do {
        const std::string_view line = message.substr(0, message.find('\n'));
        message.remove_prefix(std::min(line.size() + 1, message.size()));
        output.addLine(start, line);
    } while (!message.empty());
    return output.flush();
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
    // Read only once: the application may change its environment later.
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
        try {
            error = platform::writeMessage(prio, tag, std::string_view(message.data(), size));
        } catch (const std::bad_alloc&) {
            error = ENOMEM;
        }
    }
    errno = callersErrno;
    return error == 0 ? 1 : -error;
}
