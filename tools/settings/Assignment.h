#pragma once

#include <string>

namespace control {

/// A property as it is to be written.
struct Assignment {
    std::string name;  ///< full
    std::string text;
};

/// Makes an assignment of what somebody typed; with `isForced`, also for a name that the library does not
/// know. Returns what is wrong with the name or the value, or an empty text.
std::string readAssignment(const std::string& name, const std::string& value, bool isForced,
                           Assignment& assignment);

}  // namespace control
