#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <optional>
#include <ostream>
#include <string>

/// Verbs for profiles, which are files in the user's configuration folder. Each says on `err` what went
/// wrong.
namespace control {

/// Writes what the properties of this process's runtime directory say where it differs from the defaults,
/// those of the default profile included, and prints the file's path. Without a name, into the profile of the
/// program that shows the overlay there; if that is not known, of `process`.
ExitCode saveProfile(const std::string& name, std::optional<pid_t> process, std::ostream& out,
                     std::ostream& err);

/// Prints the profiles with the number of their settings.
ExitCode listProfiles(std::ostream& out, std::ostream& err);

/// Names each wrong line of a profile, or without a name of all of them, with its file and number. Fails when
/// there is one.
ExitCode checkProfiles(const std::string& name, std::ostream& out, std::ostream& err);

/// Opens a profile, by default the default one, in the user's editor, and checks it then. A new one begins as
/// a list of what can be set; it stays only if the user changes it.
ExitCode editProfile(const std::string& name, std::ostream& out, std::ostream& err);

}  // namespace control
