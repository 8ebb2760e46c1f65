#pragma once

#include <string>

namespace control {

/// A property and the text to write.
struct Assignment {
    std::string name;  ///< full
    std::string text;
};

/// Makes an assignment of what somebody typed; with `isForced`, also for a name that the library does not
/// know. Returns an empty text, or what is wrong with the name or the value.
std::string readAssignment(const std::string& name, const std::string& value, bool isForced,
                           Assignment& assignment);

}  // namespace control
