#include "run/InitialProperties.h"

#include "io/EscapedText.h"
#include "io/PlainFile.h"
#include "runs/RunFolder.h"

#include <sstream>

namespace control {

namespace {

constexpr const char* FILE_NAME = platform::INITIAL_PROPERTIES;
constexpr std::size_t SIZE_MAX_BYTES = std::size_t{1} << 20U;

}  // namespace

std::string writeInitialProperties(const std::string& folder, const std::vector<Assignment>& assignments) {
    std::string text;
    for (const Assignment& assignment : assignments) {
        text += assignment.name + ' ' + platform::escapeText(assignment.text) + '\n';
    }
    const int error = platform::replaceFile(folder + FILE_NAME, text);
    return error == 0 ? std::string()
                      : "cannot write " + folder + FILE_NAME + ": " + platform::plainFileError(error);
}

std::optional<std::vector<Assignment>> readInitialProperties(const std::string& folder) {
    std::string text;
    if (platform::readPlainFile(folder + FILE_NAME, text, SIZE_MAX_BYTES) != 0) {
        return std::nullopt;
    }
    std::vector<Assignment> assignments;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        const auto value = platform::unescapeText(line.substr(blank + 1));
        if (blank != std::string::npos && value) {
            assignments.push_back({line.substr(0, blank), *value});
        }
    }
    return assignments;
}

}  // namespace control
