#pragma once

#include <android/log.h>

/// Where a message comes from: the source file's base name, the function's name and the line.
#define KORDANIX_LOG_HERE __FILE_NAME__, __func__, __LINE__

/// Logs an error as "file:function(line) message". Pass KORDANIX_LOG_HERE between the format (a string
/// literal) and its arguments:
///     KORDANIX_LOG_ERROR("no glyph for %d", KORDANIX_LOG_HERE, code);
#define KORDANIX_LOG_ERROR(format, ...) \
    static_cast<void>(__android_log_print(ANDROID_LOG_ERROR, "Kordanix", "%s:%s(%d) " format, __VA_ARGS__))
