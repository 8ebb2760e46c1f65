#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// The identifiers are Android's, though C++ reserves such names.
// NOLINTBEGIN(bugprone-reserved-identifier)

/// Priorities of a log message, in rising order of severity.
typedef enum android_LogPriority {
    ANDROID_LOG_UNKNOWN = 0,
    ANDROID_LOG_DEFAULT,
    ANDROID_LOG_VERBOSE,
    ANDROID_LOG_DEBUG,
    ANDROID_LOG_INFO,
    ANDROID_LOG_WARN,
    ANDROID_LOG_ERROR,
    ANDROID_LOG_FATAL,
    ANDROID_LOG_SILENT
} android_LogPriority;

/// Writes one printf-style message under `tag`. On the host it goes to standard error in logcat's brief
/// format, with "E/Kordanix( 1234): " in front of every line. Messages below the level that KORDANIX_LOG
/// names (verbose, debug, info, warn, error, fatal, silent or their first letters; default info; read at the
/// first message) are dropped. Writes at most 1023 bytes. Any thread. Returns 1 when it wrote the message, 0
/// when it dropped it, a negative error number otherwise; keeps errno.
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

// NOLINTEND(bugprone-reserved-identifier)

#ifdef __cplusplus
}
#endif
