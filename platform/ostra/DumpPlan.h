#pragma once

#include <cstdint>
#include <string>

namespace platform {

/// Where a dump goes, settled when it starts: environment and working directory belong to the application's
/// threads and may change later.
struct DumpPlan {
    std::uint32_t number = 0;      ///< of the dump in its process, from 1
    std::string base;              ///< absolute
    std::string name;              ///< of the dump's folder in it, but for the number at its end
    std::string runtimeDirectory;  ///< for the dump's notice; empty when there is none
};

/// Plans a dump into the directory that KORDANIX_DUMP_DIR names, else the working directory, in a folder
/// named after the program and the local time. Throws std::exception.
DumpPlan planDump(std::uint32_t number);

/// Makes the dump's folder, which is new: BASE/PROGRAM-YYYYMMDD-HHMMSS-N with the first N from 1 that is
/// free. Directories above it are made as well. Returns its path; empty, with the reason in `error`, when it
/// cannot be made.
std::string makeDumpFolder(const DumpPlan& plan, std::string& error);

}  // namespace platform
