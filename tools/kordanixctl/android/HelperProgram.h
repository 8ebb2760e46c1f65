#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace control {

/// What a program said, and how it ended.
struct Answer {
    int status = 0;   ///< its exit status; 128 and more when a signal ended it
    std::string out;  ///< its standard output
    std::string err;  ///< its standard error
};

/// Runs a program to its end. `input` is its standard input, empty by default. Waits for the program alone,
/// not for what it leaves running. Throws std::exception when it cannot be started.
Answer runHelper(const std::string& path, const std::vector<std::string>& arguments,
                 std::string_view input = {});

}  // namespace control
