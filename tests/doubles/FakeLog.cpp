#include "doubles/FakeLog.h"

#include <android/log.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

std::mutex gMutex;

// There before all initialisers and never destroyed: the library may log at any time.
std::vector<doubles::LogLine>& lines() {
    static auto* const instance = new std::vector<doubles::LogLine>;
    return *instance;
}

}  // namespace

namespace doubles {

std::vector<LogLine> takeLog() {
    const std::lock_guard<std::mutex> lock(gMutex);
    return std::exchange(lines(), {});
}

}  // namespace doubles

extern "C" int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
    std::array<char, 1024> text{};
    va_list arguments;
    va_start(arguments, fmt);
    const int length = std::vsnprintf(text.data(), text.size(), fmt, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(gMutex);
    lines().push_back({prio, tag, text.data()});
    return length;
}
