#pragma once

#include "Process.h"

#include <string>
#include <vector>

namespace bench {

/// An overlay and how a user puts it over a program.
struct Candidate {
    std::string name;
    Command launcher;         ///< comes before the program
    Environment environment;  ///< is added to the program's
    std::string library;      ///< part of the path of a library that must be loaded then; may be empty
};

/// The names that the targets refer to.
inline constexpr char BARE[] = "no overlay";
inline constexpr char OURS[] = "kordanix";
inline constexpr char MANGOHUD[] = "mangohud";
inline constexpr char MANGOHUD_RATE[] = "mangohud, frame rate only";

enum class Api { OPENGL, VULKAN };

/// Returns "no overlay", then everything that is compared with it. `build` is the build folder with our
/// libraries and tools, `runtime` a private folder for our properties.
std::vector<Candidate> candidates(Api api, const std::string& build, const std::string& runtime);

/// Returns ours again, while somebody looks at the figures from outside, and while a log is written. They
/// begin a moment after the program, and end with it.
std::vector<Candidate> observed(const Candidate& ours, const std::string& build);

/// Writes the properties that show our overlay in `program`, named as it is started. On failure prints why
/// and returns false.
bool enableOurs(Api api, const std::string& build, const std::string& runtime, const std::string& program);

}  // namespace bench
