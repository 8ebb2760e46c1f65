#pragma once

#include "settings/Assignment.h"

#include <string>
#include <string_view>
#include <vector>

namespace control {

/// A line of a profile that cannot be used, counted from 1, and why.
struct ProfileError {
    int line = 0;
    std::string text;
};

/// What a profile says: what its lines set, in their order, without the wrong ones.
struct Profile {
    std::vector<Assignment> assignments;
    std::vector<ProfileError> errors;
};

/// One line of a profile, without its comment and the blanks around both words.
struct ProfileLine {
    std::string_view name;  ///< empty: the line sets nothing
    std::string_view value;
};

/// Takes a line apart. It is a name and a value, with blanks or '=' in between. A comment begins with a '#'
/// at the beginning of the line, or with one between blanks; so a colour is none.
ProfileLine splitProfileLine(std::string_view line);

/// Returns the lines of a text without the line ends; the other half of Windows' own counts as a blank.
std::vector<std::string_view> splitLines(std::string_view text);

/// Reads a profile: lines as 'kordanixctl set' takes them, whatever the bytes. Which process shows the
/// overlay (api, proc) and what publishes it are no settings of a profile. A line that gives one key two
/// things to do is wrong, also together with `before`, which the profile goes over.
Profile parseProfile(std::string_view text, const std::vector<Assignment>& before = {});

}  // namespace control
