#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Prepares the words of the command line for the parser.
namespace control {

inline constexpr const char* PROCESS_OPTION = "--process";

/// Returns the index of the verb, or the number of words. Options before it may have a value.
std::size_t findVerb(const std::vector<std::string>& words);

/// Removes the program and its arguments from the words of 'run' and returns them, so that the parser does
/// not see them. `verb` is the index of the verb.
std::vector<std::string> cutProgram(std::vector<std::string>& words, std::size_t verb);

/// Replaces 'help', 'help VERB' and 'version' by the options that mean the same. Returns an empty text, or
/// what is wrong with the words.
std::string replaceHelpVerbs(std::vector<std::string>& words, std::size_t verb);

/// Marks the words that are values even though they begin with '-': negative numbers, and everything after
/// "--", which it removes.
void markValues(std::vector<std::string>& words);

/// Removes the marks from a word, or from a text that contains such words.
std::string unmarked(std::string text);

}  // namespace control
