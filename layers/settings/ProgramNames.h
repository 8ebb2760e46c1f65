#pragma once

#include <string>
#include <vector>

namespace control {

/// A program as it was called.
struct ProgramCall {
    std::string executable;          ///< path of its file
    std::vector<std::string> words;  ///< its command line
    std::string folder;              ///< that relative paths start from
};

/// The names that a program's profile may have, the preferred one first: a script's own name, under Wine that
/// of the .exe, else what the program was called as and then its file's own name. Without folders; none is
/// empty. Looks into the file that a script would be.
std::vector<std::string> programNames(const ProgramCall& call);

/// The names of a running process, whose folder in /proc this is, such as "/proc/self". Empty when the kernel
/// does not tell.
std::vector<std::string> processNames(const std::string& procFolder);

}  // namespace control
