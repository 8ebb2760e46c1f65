#pragma once

#include <string>
#include <vector>

/// Keeps what is written to the Android log instead of printing it. Any thread.
namespace doubles {

struct LogLine {
    int priority;
    std::string tag;
    std::string text;
};

/// The lines since the previous call.
std::vector<LogLine> takeLog();

}  // namespace doubles
