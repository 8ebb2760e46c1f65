#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// Where a dump goes. Decided when it starts, because the application's threads may change the environment
/// and the working directory later.
struct DumpPlan {
    std::uint32_t number = 0;      ///< counts the process's dumps from 1
    std::string base;              ///< absolute path of the folder that gets the dump's folder
    std::string name;              ///< name of the dump's folder, without the number at its end
    std::string runtimeDirectory;  ///< for the dump's notice; empty when there is none
};

/// Plans a dump into the directory that KORDANIX_DUMP_DIR names, or else the working directory; in an Android
/// application the one of FilesFolder.h. The folder's name has the program and the local time. Throws
/// std::exception.
DumpPlan planDump(std::uint32_t number);

/// Creates a new folder for the dump, and the directories above it: BASE/PROGRAM-YYYYMMDD-HHMMSS-N with the
/// first free N from 1. Returns its path; on failure an empty text, with the reason in `error`.
std::string makeDumpFolder(const DumpPlan& plan, std::string& error);

}  // namespace platform
