#pragma once

#include <string>

namespace platform {

/// Where this process's dumps go.
struct DumpPlace {
    std::string base;             ///< the folder that gets the dumps' folders; may be relative
    std::string noticeDirectory;  ///< for the dumps' notices; empty when there is none
};

/// Looks it up anew at every call. Throws std::exception.
DumpPlace findDumpPlace();

}  // namespace platform
