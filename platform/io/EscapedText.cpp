#include "io/EscapedText.h"

#include <charconv>

namespace platform {

std::string escapeText(std::string_view text) {
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string line;
    line.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isOuter = i == 0 || i + 1 == text.size();
        if (byte == '\\') {
            line += "\\\\";
        } else if (byte == '\n') {
            line += "\\n";
        } else if (byte < ' ' || byte == 0x7f || (byte == ' ' && isOuter)) {
            line += {'\\', 'x', DIGITS[byte / 16], DIGITS[byte % 16]};
        } else {
            line += text[i];
        }
    }
    return line;
}

std::optional<std::string> unescapeText(std::string_view line) {
    std::string text;
    text.reserve(line.size());
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\0') {
            return std::nullopt;
        }
        if (line[i] != '\\') {
            text += line[i];
            continue;
        }
        const std::string_view rest = line.substr(i + 1);
        const char kind = rest.empty() ? '\0' : rest.front();
        if (kind == '\\' || kind == 'n') {
            text += kind == 'n' ? '\n' : '\\';
            i += 1;
            continue;
        }
        unsigned byte = 0;
        if (kind != 'x' || rest.size() < 3 ||
            std::from_chars(&rest[1], &rest[1] + 2, byte, 16).ptr != &rest[1] + 2 || byte == 0) {
            return std::nullopt;
        }
        text += static_cast<char>(byte);
        i += 3;
    }
    return text;
}

}  // namespace platform
