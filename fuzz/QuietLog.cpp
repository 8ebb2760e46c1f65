#include <android/log.h>

#include <cstdarg>
#include <cstdio>

// In place of the platform's. The message is formatted, so that an argument that does not fit is noticed, and
// dropped: targets cause thousands a second.
int __android_log_print(int /*prio*/, const char* /*tag*/, const char* fmt, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, fmt);
    const int length = std::vsnprintf(text, sizeof text, fmt, arguments);
    va_end(arguments);
    return length;
}
