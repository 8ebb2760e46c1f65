#pragma once

#include <android/log.h>

namespace platform {

/// The lowest priority that is written, by the text of KORDANIX_LOG: a level's letter or word in any case
/// ("W", "warn", "Silent"). Null and any other text give ANDROID_LOG_INFO.
android_LogPriority logLevelFrom(const char* text);

}  // namespace platform
