#pragma once

#include <android/log.h>

/// Where a message is logged: the source file's base name, the function's name and the line.
#define KORDANIX_LOG_HERE __FILE_NAME__, __func__, __LINE__

/// Writes an error to the log, "file:function(line) message". The place stands after the message's format (a
/// string literal) and before its arguments:
///     KORDANIX_LOG_ERROR("no glyph for %d", KORDANIX_LOG_HERE, code);
#define KORDANIX_LOG_ERROR(format, ...) \
    static_cast<void>(__android_log_print(ANDROID_LOG_ERROR, "Kordanix", "%s:%s(%d) " format, __VA_ARGS__))
