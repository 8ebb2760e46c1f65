#include "simulator/Device.h"

#include <fcntl.h>
#include <sys/system_properties.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>

namespace simulator {

namespace {

namespace fs = std::filesystem;

constexpr int MAX_DECIMALS = 6;

/// Does not use a stream: the standard library opens one with fopen, which the simulator replaces. Returns an
/// empty text or an error.
std::string readText(const std::string& path, std::string& text) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ssize_t size = descriptor < 0 ? -1 : 1;
    char buffer[4096];
    while (size > 0) {
        size = read(descriptor, buffer, sizeof(buffer));
        text.append(buffer, size > 0 ? static_cast<std::size_t>(size) : 0);
    }
    const int error = errno;
    if (descriptor >= 0) {
        close(descriptor);
    }
    return size < 0 ? path + ": " + std::generic_category().message(error) : std::string();
}

std::string at(const std::string& path, std::string_view text, std::size_t position) {
    const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(position), '\n');
    return path + ':' + std::to_string(lines + 1) + ": ";
}

void appendNumber(std::string& text, double number, int decimals) {
    char digits[400];  // the largest double has 309 digits
    const auto result =
        std::to_chars(digits, digits + sizeof(digits), number, std::chars_format::fixed, decimals);
    text.append(digits, result.ptr);
}

}  // namespace

std::string Device::load(const std::string& folder) {
    if (!fs::is_directory(folder)) {
        return folder + ": there is no such device folder";
    }
    const std::string scriptPath = folder + "/script.json";
    std::string text;
    std::string error = readText(scriptPath, text);
    if (error.empty()) {
        error = mScript.read(scriptPath, text);
    }
    if (error.empty()) {
        error = readProperties(folder + "/properties");
    }
    return error.empty() ? readFiles(folder) : error;
}

std::string Device::readProperties(const std::string& path) {
    std::string text;
    std::string error = readText(path, text);
    if (!error.empty()) {
        return error;
    }
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        const std::size_t equals = line.find('=');
        if (!line.empty() && line[0] != '#') {
            if (equals == std::string::npos || equals == 0) {
                return at(path, text, begin) + "expected NAME=VALUE";
            }
            if (line.size() - equals - 1 >= PROP_VALUE_MAX) {
                return at(path, text, begin) + "expected a value of at most 91 bytes";
            }
            mProperties[line.substr(0, equals)] = line.substr(equals + 1);
        }
        begin = end + 1;
    }
    return {};
}

std::string Device::readFiles(const std::string& folder) {
    for (const char* const root : {"/proc", "/sys"}) {
        std::error_code failure;
        for (fs::recursive_directory_iterator entry(folder + root, failure), end; !failure && entry != end;
             entry.increment(failure)) {
            if (!entry->is_regular_file()) {
                continue;
            }
            const std::string path = entry->path().string();
            std::string text;
            std::string error = readText(path, text);
            if (error.empty()) {
                error = parseFile(path, text, mFiles[path.substr(folder.size())]);
            }
            if (!error.empty()) {
                return error;
            }
        }
        if (failure && failure != std::errc::no_such_file_or_directory) {
            return folder + root + ": " + failure.message();
        }
    }
    return {};
}

std::string Device::parseFile(const std::string& path, std::string_view text,
                              std::vector<Piece>& pieces) const {
    std::size_t begin = 0;
    while (true) {
        Piece& piece = pieces.emplace_back();
        const std::size_t brace = text.find('{', begin);
        piece.text = text.substr(begin, brace - begin);
        if (brace == std::string_view::npos) {
            return {};
        }
        const std::size_t end = text.find('}', brace);
        if (end == std::string_view::npos) {
            return at(path, text, brace) + "expected a } after the {";
        }
        piece.figure = text.substr(brace + 1, end - brace - 1);
        const std::size_t point = piece.figure.find('.');
        if (point != std::string::npos) {
            const char* const last = piece.figure.data() + piece.figure.size();
            const auto result = std::from_chars(piece.figure.data() + point + 1, last, piece.decimals);
            if (result.ec != std::errc() || result.ptr != last || piece.decimals < 0 ||
                piece.decimals > MAX_DECIMALS) {
                return at(path, text, brace) + "expected {NAME} or {NAME.DECIMALS} with 0 to 6 decimals";
            }
            piece.figure.erase(point);
        }
        if (!mScript.hasFigure(piece.figure)) {
            return at(path, text, brace) + "expected the name of a curve or total of the script, found \"" +
                   piece.figure + '"';
        }
        begin = end + 1;
    }
}

std::optional<std::string> Device::fileAt(const std::string& path, double seconds) const {
    const auto found = mFiles.find(path);
    if (found == mFiles.end()) {
        return std::nullopt;
    }
    std::string text;
    for (const Piece& piece : found->second) {
        text += piece.text;
        if (!piece.figure.empty()) {
            appendNumber(text, mScript.figureAt(piece.figure, seconds), piece.decimals);
        }
    }
    return text;
}

}  // namespace simulator
