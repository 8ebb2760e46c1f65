#include "overlays/DumpAnswers.h"

#include "Diagnostic.h"
#include "io/ProcessStart.h"
#include "overlays/OverlayState.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <tuple>
#include <utility>

namespace control {

namespace {

using Clock = std::chrono::steady_clock;
using State = platform::DumpNotice::State;

constexpr std::chrono::seconds PATIENCE(3);
constexpr useconds_t POLL_PERIOD_US = 10'000;

/// A notice with the same number that an earlier process left has at least another folder.
bool isSame(const platform::DumpNotice& a, const platform::DumpNotice& b) {
    return std::tie(a.number, a.state, a.frames, a.folder, a.error) ==
           std::tie(b.number, b.state, b.frames, b.folder, b.error);
}

ExitCode tell(pid_t process, const platform::DumpNotice& notice, std::ostream& out, std::ostream& err) {
    const std::string who = "Process " + std::to_string(process);
    switch (notice.state) {
        case State::RUNNING:
            out << who << " dumps into " << notice.folder << '\n';
            return SUCCESS;
        case State::DONE:
            out << who << " has ended its dump: " << notice.frames
                << (notice.frames == 1 ? " frame" : " frames") << " in " << notice.folder << '\n';
            return SUCCESS;
        case State::FAILED:
            break;
    }
    return fail("the dump of process " + std::to_string(process) + " failed: " + notice.error, err);
}

}  // namespace

DumpAnswers::DumpAnswers(std::string directory, const std::vector<pid_t>& processes)
    : mDirectory(std::move(directory)) {
    for (const pid_t process : processes) {
        mBefore[process] = platform::readDumpNotice(mDirectory, process);
    }
}

ExitCode DumpAnswers::await(std::vector<pid_t> processes, std::ostream& out, std::ostream& err) const {
    ExitCode result = SUCCESS;
    const auto note = [&](ExitCode told) { result = told == SUCCESS ? result : told; };
    const Clock::time_point end = Clock::now() + PATIENCE;
    while (!processes.empty() && Clock::now() < end) {
        const auto takeAnswer = [&](pid_t process) {
            const auto notice = answer(process);
            if (notice) {
                note(tell(process, *notice, out, err));
            } else if (!platform::processStart(process)) {
                note(fail("process " + std::to_string(process) + " has ended", err));
            } else {
                return false;
            }
            return true;
        };
        processes.erase(std::remove_if(processes.begin(), processes.end(), takeAnswer), processes.end());
        usleep(processes.empty() ? 0 : POLL_PERIOD_US);
    }
    for (const pid_t process : processes) {
        const auto& before = mBefore.at(process);
        std::string reason = findObstacle(mDirectory, process);
        if (reason.empty() && before && before->state == State::FAILED) {
            reason = "begins no dump: this press ended the one that had failed (" + before->error +
                     "); the next press begins anew";
        } else if (reason.empty()) {
            reason =
                "does not answer: it has presented no frame since, or can write no file in " + mDirectory;
        }
        note(fail("process " + std::to_string(process) + ' ' + reason, err));
    }
    return result;
}

/// The process's notice, if it has changed since the key was pressed.
std::optional<platform::DumpNotice> DumpAnswers::answer(pid_t process) const {
    const auto notice = platform::readDumpNotice(mDirectory, process);
    const auto& before = mBefore.at(process);
    return notice && (!before || !isSame(*notice, *before)) ? notice : std::nullopt;
}

}  // namespace control
