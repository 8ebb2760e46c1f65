#include "settings/Profile.h"

#include "io/EscapedText.h"
#include "settings/KeyConflicts.h"
#include "settings/PropertyTable.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace control {

namespace {

constexpr std::string_view BLANKS = " \t\v\f\r";
/// Of a message, in bytes: what is wrong may be no text at all.
constexpr std::size_t LONGEST_ERROR = 500;

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

bool isBlank(char c) {
    return BLANKS.find(c) != std::string_view::npos;
}

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(BLANKS), text.size());
    return text.substr(first, text.find_last_not_of(BLANKS) + 1 - first);
}

std::string_view withoutComment(std::string_view line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool isAfterBlank = i == 0 || isBlank(line[i - 1]);
        if (line[i] == '#' && isAfterBlank && (i == 0 || i + 1 == line.size() || isBlank(line[i + 1]))) {
            return line.substr(0, i);
        }
    }
    return line;
}

/// Returns what is wrong with the line, or an empty text.
std::string readLine(const ProfileLine& line, Assignment& assignment) {
    const std::string name(line.name);
    if (name == "preset") {
        return "a profile has no presets: 'run --preset' begins with one, and 'kordanixctl save' writes what "
               "one shows";
    }
    const Property* const property = findProperty(name);
    const bool isWhere =
        property != nullptr && (property->type == PropertyType::GENERATION || property->shortName == "api" ||
                                property->shortName == "proc");
    if (isWhere) {
        return "'" + name + "' cannot be set in a profile";
    }
    if (property != nullptr && line.value.empty()) {
        return "'" + name + "' has no value; expected NAME VALUE";
    }
    return readAssignment(name, std::string(line.value), false, assignment);
}

/// Makes an error of the last line that gives a key a second thing to do, until there is none. What it was to
/// do is as it was without this profile.
void refuseSharedKeys(Profile& profile, std::vector<int>& lines, const std::vector<Assignment>& before) {
    std::vector<Assignment>& own = profile.assignments;
    const auto textOf = [&](const std::string& name) -> std::optional<std::string> {
        for (const std::vector<Assignment>* const assignments : {&std::as_const(own), &before}) {
            const auto last = std::find_if(assignments->rbegin(), assignments->rend(),
                                           [&](const Assignment& each) { return each.name == name; });
            if (last != assignments->rend()) {
                return last->text;
            }
        }
        return std::nullopt;
    };
    for (std::size_t i = own.size(); i > 0;) {
        const std::string name = own[--i].name;
        const std::string error = keyConflict(name, textOf);
        if (error.empty()) {
            continue;
        }
        profile.errors.push_back({lines[i], platform::escapeText(error)});
        std::vector<Assignment> kept;
        std::vector<int> keptLines;
        for (std::size_t k = 0; k < own.size(); ++k) {
            if (own[k].name != name) {
                kept.push_back(own[k]);
                keptLines.push_back(lines[k]);
            }
        }
        own = std::move(kept);
        lines = std::move(keptLines);
        i = own.size();
    }
    std::sort(profile.errors.begin(), profile.errors.end(),
              [](const ProfileError& one, const ProfileError& other) { return one.line < other.line; });
}

}  // namespace

ProfileLine splitProfileLine(std::string_view line) {
    while (line.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
        line.remove_prefix(BYTE_ORDER_MARK.size());
    }
    const std::string_view words = withoutBlanks(withoutComment(withoutBlanks(line)));
    const std::size_t end = std::min(words.find_first_of(std::string(BLANKS) + '='), words.size());
    std::string_view value = withoutBlanks(words.substr(end));
    if (!value.empty() && value.front() == '=') {
        value = withoutBlanks(value.substr(1));
    }
    return {words.substr(0, end), value};
}

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

Profile parseProfile(std::string_view text, const std::vector<Assignment>& before) {
    Profile profile;
    std::vector<int> numbers;  // of the assignments' lines
    int number = 0;
    for (const std::string_view line : splitLines(text)) {
        ++number;
        const ProfileLine parts = splitProfileLine(line);
        if (parts.name.empty() && parts.value.empty()) {
            continue;
        }
        Assignment assignment;
        std::string error = readLine(parts, assignment);
        if (error.empty()) {
            profile.assignments.push_back(std::move(assignment));
            numbers.push_back(number);
        } else {
            error = platform::escapeText(error);  // it is for a terminal
            if (error.size() > LONGEST_ERROR) {
                error.resize(LONGEST_ERROR);
                error += "...";
            }
            profile.errors.push_back({number, std::move(error)});
        }
    }
    refuseSharedKeys(profile, numbers, before);
    return profile;
}

}  // namespace control
