#pragma once

#include <sys/types.h>

#include <string>

namespace platform {

/// PROGRAM-YYYYMMDD-HHMMSS, of a process (0: this one) and the local time, made of characters that no shell
/// treats specially: what dumps, logs and pictures are named after.
std::string recordName(pid_t process = 0);

}  // namespace platform
