#include "properties/InitialProperties.h"

#include "io/EscapedText.h"
#include "io/PlainFile.h"
#include "runs/RunFolder.h"

#include <sstream>

namespace control {

namespace {

constexpr const char* BEGIN_FILE = platform::INITIAL_PROPERTIES;
constexpr const char* DEFAULT_FILE = "/properties.default";
constexpr std::size_t SIZE_MAX_BYTES = std::size_t{1} << 20U;

std::optional<PropertyTexts> readTexts(const std::string& path) {
    std::string bytes;
    if (platform::readPlainFile(path, bytes, SIZE_MAX_BYTES) != 0) {
        return std::nullopt;
    }
    PropertyTexts texts;
    std::istringstream lines(bytes);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        const auto value = platform::unescapeText(line.substr(blank + 1));
        if (blank != std::string::npos && value) {
            texts[line.substr(0, blank)] = *value;
        }
    }
    return texts;
}

}  // namespace

std::string writeInitialProperties(const std::string& folder, const RunSettings& settings) {
    std::string error = platform::writePropertyTexts(folder + DEFAULT_FILE, settings.withoutPreset());
    return error.empty() ? platform::writePropertyTexts(folder + BEGIN_FILE, settings.all()) : error;
}

std::optional<PropertyTexts> readInitialProperties(const std::string& folder) {
    return readTexts(folder + BEGIN_FILE);
}

PropertyTexts readDefaultProperties(const std::string& folder) {
    if (std::optional<PropertyTexts> texts = readTexts(folder + DEFAULT_FILE)) {
        return *std::move(texts);
    }
    return readInitialProperties(folder).value_or(PropertyTexts());
}

}  // namespace control
