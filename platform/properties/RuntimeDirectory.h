#pragma once

#include <string>

namespace platform {

/// The folder that the user's processes share: the property file and the sockets of running overlays.
/// Exactly one of the two texts is non-empty.
struct RuntimeDirectory {
    std::string path;   ///< absolute, without a trailing slash
    std::string error;  ///< why there is none, in plain words
};

/// Finds the runtime directory and creates it with mode 0700 when it is missing (the folder itself, not
/// those above it). It is the first of these whose variable is set and not empty:
///   $KORDANIX_RUNTIME_DIR, $XDG_RUNTIME_DIR/kordanix, /tmp/kordanix-<user id>.
/// Refused are a relative path, anything but a folder (a symbolic link included), a folder that another
/// user owns, one that everybody may write to and, below /tmp, one that the group may write to.
/// Reads the environment at every call; any thread, as long as none changes the environment.
RuntimeDirectory openRuntimeDirectory();

/// The same with a path that was chosen otherwise. The folder of a run (see runs/RunFolder.h) is not created:
/// the run has ended.
RuntimeDirectory openRuntimeDirectory(const std::string& path);

/// The path that the environment names, before anything is looked at or created.
std::string runtimeDirectoryPath();

/// The path of the one that this process uses: the first that openRuntimeDirectory() gave, since from then on
/// the program's threads may change the environment. Null, with the reason in `error`, while there is none.
/// The text lives as long as the process, and is the same object until the directory is changed. Any thread.
const std::string* ownRuntimeDirectory(std::string& error);

/// Makes `directory` the runtime directory of this process, as if KORDANIX_RUNTIME_DIR had named it at its
/// start (the variable is set too). While no other thread uses properties or the environment.
void changeRuntimeDirectory(const std::string& directory);

}  // namespace platform
