#include "cli/Words.h"

#include <algorithm>

namespace control {

namespace {

constexpr const char* END_OF_OPTIONS = "--";

/// A byte that nobody types.
constexpr char MARK = '\x01';

bool isOption(const std::string& word) {
    return !word.empty() && word[0] == '-';
}

bool isNegativeNumber(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && word.find_first_not_of("0123456789", 1) == std::string::npos;
}

}  // namespace

std::size_t findVerb(const std::vector<std::string>& words) {
    std::size_t i = 0;
    while (i < words.size() && isOption(words[i])) {
        i += words[i] == PROCESS_OPTION ? 2 : 1;
    }
    return std::min(i, words.size());
}

std::vector<std::string> cutProgram(std::vector<std::string>& words, std::size_t verb) {
    std::size_t i = verb + 1;
    while (i < words.size() && words[i] != END_OF_OPTIONS && isOption(words[i])) {
        i += words[i] == "--set" || words[i] == "--preset" || words[i] == PROCESS_OPTION ? 2 : 1;
    }
    i = std::min(i, words.size());
    const std::size_t first = i + (i < words.size() && words[i] == END_OF_OPTIONS ? 1 : 0);
    std::vector<std::string> program(words.begin() + static_cast<std::ptrdiff_t>(first), words.end());
    words.resize(i);
    return program;
}

void replaceHelpVerbs(std::vector<std::string>& words, std::size_t verb) {
    if (verb < words.size() && words[verb] == "help") {
        words.erase(words.begin() + static_cast<std::ptrdiff_t>(verb));
        words.resize(std::min(words.size(), verb + 1));
        words.emplace_back("--help");
    } else if (verb < words.size() && words[verb] == "version") {
        words[verb] = "--version";
    }
}

void markValues(std::vector<std::string>& words) {
    const auto end = std::find(words.begin(), words.end(), END_OF_OPTIONS);
    const auto mark = [](std::string& word) { word.insert(word.begin(), MARK); };
    std::for_each(words.begin(), end, [&](std::string& word) {
        if (isNegativeNumber(word)) {
            mark(word);
        }
    });
    if (end != words.end()) {
        std::for_each(end + 1, words.end(), mark);
        words.erase(end);
    }
}

std::string unmarked(std::string text) {
    text.erase(std::remove(text.begin(), text.end(), MARK), text.end());
    return text;
}

}  // namespace control
