#pragma once

#include "Process.h"

#include <string>
#include <vector>

namespace bench {

/// An overlay and how a user puts it over a program.
struct Candidate {
    std::string name;
    Command launcher;         ///< stands before the program
    Environment environment;  ///< added to the program's
    std::string library;      ///< part of the path of what must be in the program then; empty: nothing
};

/// The names by which the targets are told.
inline constexpr char BARE[] = "no overlay";
inline constexpr char OURS[] = "kordanix";
inline constexpr char MANGOHUD[] = "mangohud";
inline constexpr char MANGOHUD_RATE[] = "mangohud, frame rate only";

/// No overlay first, then everything that is measured against it. `build` is the build folder with our
/// libraries and tools, `runtime` a private folder for our properties.
std::vector<Candidate> candidates(const std::string& build, const std::string& runtime);

/// Writes the properties that put our overlay over `program`, as it is started. False: a reason is printed.
bool enableOurs(const std::string& build, const std::string& runtime, const std::string& program);

}  // namespace bench
