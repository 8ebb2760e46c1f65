#pragma once

#include "ExitCode.h"
#include "ostra/DumpNotice.h"

#include <sys/types.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace control {

/// Collects what processes say about their dumps after somebody pressed the dump key.
class DumpAnswers {
public:
    /// Make it before the key is pressed.
    DumpAnswers(std::string directory, const std::vector<pid_t>& processes);

    /// Waits at most a few seconds for these processes' answers, and prints them. Fails when a process gives
    /// no answer, or could not write its dump.
    ExitCode await(std::vector<pid_t> processes, std::ostream& out, std::ostream& err) const;

private:
    std::optional<platform::DumpNotice> answer(pid_t process) const;

    std::string mDirectory;
    std::map<pid_t, std::optional<platform::DumpNotice>> mBefore;
};

}  // namespace control
