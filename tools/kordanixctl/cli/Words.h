#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The words of the command line before the parser sees them.
namespace control {

inline constexpr const char* PROCESS_OPTION = "--process";

/// Where the verb stands, or the end. Options before it may have a value of their own.
std::size_t findVerb(const std::vector<std::string>& words);

/// Cuts the program and its arguments, which are not the parser's, off the words of 'run'; its verb stands
/// at `verb`.
std::vector<std::string> cutProgram(std::vector<std::string>& words, std::size_t verb);

/// Writes 'help', 'help VERB' and 'version' as the options that mean the same.
void replaceHelpVerbs(std::vector<std::string>& words, std::size_t verb);

/// Marks the words that are values though they begin with '-': negative numbers, and all after "--", which
/// is taken out.
void markValues(std::vector<std::string>& words);

/// Takes the marks off a word, or off a text with such words in it.
std::string unmarked(std::string text);

}  // namespace control
