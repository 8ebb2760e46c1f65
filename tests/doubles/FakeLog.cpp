#include "doubles/FakeLog.h"

#include <android/log.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace {

struct Log {
    std::mutex mutex;
    std::vector<doubles::LogLine> lines;
};

Log& log() {
    static Log* const instance = new Log;
    return *instance;
}

}  // namespace

namespace doubles {

std::vector<LogLine> takeLog() {
    const std::lock_guard<std::mutex> lock(log().mutex);
    std::vector<LogLine> lines;
    lines.swap(log().lines);
    return lines;
}

}  // namespace doubles

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    std::array<char, 1024> text{};
    va_list arguments;
    va_start(arguments, fmt);
    const int length = std::vsnprintf(text.data(), text.size(), fmt, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(log().mutex);
    log().lines.push_back({prio, tag, text.data()});
    return length;
}
