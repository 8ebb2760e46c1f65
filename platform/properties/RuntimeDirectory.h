#pragma once

#include <string>

namespace platform {

/// The folder that the user's processes share: the property file and the sockets of running overlays.
/// Exactly one of the two texts is non-empty.
struct RuntimeDirectory {
    std::string path;   ///< absolute, without a trailing slash
    std::string error;  ///< why there is no usable folder, in plain words
};

/// Finds the runtime directory and creates it with mode 0700 when it is missing (only the folder itself). It
/// is the first of these whose variable is set and not empty:
///   $KORDANIX_RUNTIME_DIR, $XDG_RUNTIME_DIR/kordanix, /tmp/kordanix-<user id>.
/// Refuses a relative path, anything but a folder (a symbolic link included), a folder that another user
/// owns, one that everybody may write to and, below /tmp, one that the group may write to. Reads the
/// environment at every call; any thread, as long as no thread changes the environment meanwhile.
RuntimeDirectory openRuntimeDirectory();

/// Does the same for a given path. Never creates the folder of a run (see runs/RunFolder.h): if it is
/// missing, the run has ended.
RuntimeDirectory openRuntimeDirectory(const std::string& path);

/// Returns the path that the environment names, without looking at it or creating it.
std::string runtimeDirectoryPath();

/// Returns the path of this process's runtime directory: the first that openRuntimeDirectory() gave, whatever
/// the program later does to its environment. Null, with the reason in `error`, while there is none. The text
/// lives as long as the process, and is the same object until the directory changes. Any thread.
const std::string* ownRuntimeDirectory(std::string& error);

/// Makes `directory` the runtime directory of this process, as if KORDANIX_RUNTIME_DIR had named it from the
/// start (it sets the variable too). No other thread may use properties or the environment meanwhile.
void changeRuntimeDirectory(const std::string& directory);

/// Makes `directory` this process's own one, whatever its environment says, and leaves the environment alone.
/// Any thread; others may use properties meanwhile. Throws std::bad_alloc.
void useRuntimeDirectory(const std::string& directory);

}  // namespace platform
