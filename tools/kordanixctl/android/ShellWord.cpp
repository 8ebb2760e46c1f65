#include "android/ShellWord.h"

namespace control {

std::string shellWord(std::string_view text) {
    constexpr std::string_view PLAIN =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=.,:/@%";
    if (!text.empty() && text.find_first_not_of(PLAIN) == std::string_view::npos) {
        return std::string(text);
    }
    // Easier to read, where nothing is special within double quotes.
    if (text.find('\'') != std::string_view::npos &&
        text.find_first_of("\"$`\\!") == std::string_view::npos) {
        return '"' + std::string(text) + '"';
    }
    std::string word = "'";
    for (const char symbol : text) {
        // Within single quotes nothing is special but the quote, which cannot be there at all.
        word += symbol == '\'' ? std::string("'\\''") : std::string(1, symbol);
    }
    return word + '\'';
}

std::string shellLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) {
        line += line.empty() ? "" : " ";
        line += shellWord(word);
    }
    return line;
}

}  // namespace control
