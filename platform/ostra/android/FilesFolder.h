#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace platform {

/// The folder for dumps and pictures of the application with this user id, whose main thread has this command
/// line: files/kordanix in its own data folder. Relative when the command line names no package.
std::string filesFolder(uid_t user, std::string_view commandLine);

/// The folder for this process, which need not exist: the one that KORDANIX_DUMP_DIR names, or else that of
/// the application. Throws std::bad_alloc.
std::string ownFilesFolder();

}  // namespace platform
