#pragma once

#include <android/log.h>

namespace platform {

/// Returns the lowest priority to write for a text of KORDANIX_LOG: a level's letter or word in any case
/// ("W", "warn", "Silent"). Null and any other text give ANDROID_LOG_INFO.
android_LogPriority logLevelFrom(const char* text);

}  // namespace platform
