#pragma once

#include <string>

namespace platform {

/// PROGRAM-YYYYMMDD-HHMMSS, of this process and the local time, made of characters that no shell treats
/// specially: what dumps and logs are named after.
std::string recordName();

}  // namespace platform
