#pragma once

#include "ExitCode.h"

#include <sys/types.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "ostra/DumpNotice.h"

namespace control {

/// What becomes of dumps after their key was pressed, as the processes tell it.
class DumpAnswers {
public:
    /// Before the key is pressed.
    DumpAnswers(std::string directory, const std::vector<pid_t>& processes);

    /// Waits a few seconds at most for these processes' answers, and says what they are. Fails when one has
    /// none, or a dump could not be written.
    ExitCode await(std::vector<pid_t> processes, std::ostream& out, std::ostream& err) const;

private:
    std::optional<platform::DumpNotice> answer(pid_t process) const;

    std::string mDirectory;
    std::map<pid_t, std::optional<platform::DumpNotice>> mBefore;
};

}  // namespace control
