#include "cli/Words.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>
#include <system_error>

namespace control {

namespace {

constexpr const char* END_OF_OPTIONS = "--";
constexpr const char* LOG_OPTION = "--log";

/// A byte that nobody types.
constexpr char MARK = '\x01';

bool isOption(const std::string& word) {
    return !word.empty() && word[0] == '-';
}

bool isNegativeNumber(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && word.find_first_not_of("0123456789", 1) == std::string::npos;
}

/// Options of 'run' that have a value.
constexpr std::string_view WITH_VALUE[] = {"--set",       "--preset",  PROCESS_OPTION,
                                           "--log-after", "--log-for", "--fail-if"};

bool isOptionOfRun(const std::string& word) {
    const std::string_view name = std::string_view(word).substr(0, word.find('='));
    return word == END_OF_OPTIONS || name == LOG_OPTION ||
           std::count(std::begin(WITH_VALUE), std::end(WITH_VALUE), name) != 0;
}

/// Whether the word is --log and the next one its folder, which may be left out, and not the program.
bool isFolderNext(const std::vector<std::string>& words, std::size_t i) {
    if (words[i] != LOG_OPTION || i + 1 >= words.size() || words[i + 1].empty() || isOption(words[i + 1])) {
        return false;
    }
    std::error_code ignored;
    return (i + 2 < words.size() && isOptionOfRun(words[i + 2])) ||
           std::filesystem::is_directory(words[i + 1], ignored) || words[i + 1].back() == '/';
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
        i += isFolderNext(words, i) || std::count(std::begin(WITH_VALUE), std::end(WITH_VALUE), words[i]) != 0
                 ? 2
                 : 1;
    }
    i = std::min(i, words.size());
    const std::size_t first = i + (i < words.size() && words[i] == END_OF_OPTIONS ? 1 : 0);
    std::vector<std::string> program(words.begin() + static_cast<std::ptrdiff_t>(first), words.end());
    words.resize(i);
    return program;
}

std::string replaceHelpVerbs(std::vector<std::string>& words, std::size_t verb) {
    if (verb < words.size() && words[verb] == "help") {
        if (words.size() > verb + 2) {
            return "'help' explains one verb; '" + words[verb + 2] + "' is a word too many";
        }
        words.erase(words.begin() + static_cast<std::ptrdiff_t>(verb));
        words.emplace_back("--help");
    } else if (verb < words.size() && words[verb] == "version") {
        words[verb] = "--version";
    }
    return {};
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
