#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace privilege {

/// System calls by name, "#NUMBER" for those that have none here.
using CallCounts = std::map<std::string, unsigned>;

/// What a traced program asked of the kernel.
struct Trace {
    /// By phase: what the program's first thread called, and what all others did. The program begins a phase
    /// with beginPhase() of Phases.h; before the first one, it is phase 0.
    std::map<int, CallCounts> main;
    std::map<int, CallCounts> others;

    /// By phase and path: how often each was to be opened, whether it was there or not, by any thread.
    std::map<int, CallCounts> opened;

    std::set<int> handledSignals;
    std::set<int> socketFamilies;
    unsigned programs = 0;   ///< executed, the first one included
    unsigned processes = 0;  ///< started
    int exitCode = -1;       ///< minus the signal when one ended the program
};

/// Runs the program under ptrace(2) from its first instruction to its end. False, with `reason`, when
/// processes cannot be traced here.
bool traceProgram(const std::vector<std::string>& command, Trace& trace, std::string& reason);

}  // namespace privilege
