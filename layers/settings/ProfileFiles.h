#pragma once

#include "settings/Profile.h"

#include <string>
#include <vector>

/// This user's profiles: files NAME.conf in one folder. "default" is for all programs.
namespace control {

inline constexpr const char* DEFAULT_PROFILE = "default";

/// $XDG_CONFIG_HOME/kordanix, or ~/.config/kordanix; empty when the environment tells neither. Not while
/// another thread changes the environment.
std::string profileFolder();

/// The path of a profile; a name with a slash is one already.
std::string profilePath(const std::string& name);

/// The names of the profiles that there are, sorted.
std::vector<std::string> profileNames();

/// What is said for a program: by the default profile, and after it by the program's own.
struct ProgramProfiles {
    std::vector<Assignment> assignments;
    std::vector<std::string> errors;  ///< "FILE:LINE: what is wrong", and files that cannot be read
    std::vector<std::string> paths;   ///< that were looked for, existing or not
};

/// The errors to print where nobody has asked for all of them: the first ones, and how many more there are.
std::vector<std::string> firstErrors(const ProgramProfiles& profiles);

/// Why a profile cannot be read or written, by the error number.
std::string profileFileError(int error);

/// Adds one profile, of at most 64 kB, to what is said in `all`. Returns whether there is such a file.
bool readProfile(const std::string& path, ProgramProfiles& all);

/// Reads the profiles for a program that may have these names (see ProgramNames.h); the first one for which
/// there is a file counts. With a folder that was asked for before, any thread.
ProgramProfiles readProfiles(const std::vector<std::string>& names,
                             const std::string& folder = profileFolder());

}  // namespace control
