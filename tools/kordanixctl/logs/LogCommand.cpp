#include "logs/LogCommand.h"

#include "Diagnostic.h"
#include "dumps/DumpReader.h"
#include "dumps/logs/LogSummary.h"
#include "io/ProcessStart.h"
#include "ostra/ProcessSocket.h"
#include "ostra/logs/LogNotice.h"
#include "overlays/ChosenOverlays.h"
#include "overlays/OverlayState.h"
#include "processes/ProcessInfo.h"
#include "properties/Notices.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace control {

namespace {

using platform::LogNotice;
using platform::LogRequest;
using Clock = std::chrono::steady_clock;
using Kind = LogRequest::Kind;

constexpr std::chrono::seconds PATIENCE(3);
constexpr useconds_t POLL_PERIOD_US = 10'000;

/// The log that is being written; null when there is none.
const LogNotice* running(const std::vector<LogNotice>& notices) {
    const auto found = std::find_if(notices.begin(), notices.end(), [](const LogNotice& notice) {
        return notice.state == LogNotice::State::RUNNING;
    });
    return found == notices.end() ? nullptr : &*found;
}

/// What a process is to say about one log.
struct Question {
    std::uint32_t number = 0;  ///< of the log
    bool isItsEnd = false;     ///< whether the answer is how it ended
};

std::optional<LogNotice> answer(const std::string& directory, pid_t process, const Question& question) {
    for (LogNotice& notice : platform::readLogNotices(directory, process)) {
        if (notice.number == question.number &&
            (!question.isItsEnd || notice.state != LogNotice::State::RUNNING)) {
            return std::move(notice);
        }
    }
    return std::nullopt;
}

/// On the overlay too, for whoever pressed a key.
ExitCode failToLog(const std::string& error, std::ostream& err) {
    showNotice("No log");
    return fail(error, err);
}

/// On the overlay, and on `out`.
ExitCode tell(pid_t process, const LogNotice& notice, std::ostream& out, std::ostream& err) {
    const std::string who = describeProcess(process, processName(process));
    const char* const notices[] = {"Log started", "Log saved", "Log failed"};  // in the order of its states
    showNotice(notices[static_cast<std::size_t>(notice.state)]);
    if (notice.state == LogNotice::State::FAILED) {
        return fail("the log of " + who + " failed: " + notice.error, err);
    }
    if (notice.state == LogNotice::State::RUNNING) {
        out << "Logging " << who << " into " << notice.path << '\n';
        return SUCCESS;
    }
    out << "Logged " << who << " into " << notice.path << '\n';
    return failUnlessEmpty(printLogFile(notice.path, out), err);
}

ExitCode ask(const std::string& directory, pid_t process, const LogRequest& request, std::ostream& out,
             std::ostream& err) {
    const std::vector<LogNotice> before = platform::readLogNotices(directory, process);
    const LogNotice* const current = running(before);
    const std::string who = describeProcess(process, processName(process));
    if (request.kind == Kind::START && current != nullptr) {
        return failToLog(who + " is being logged already, into " + current->path, err);
    }
    if (request.kind == Kind::STOP && current == nullptr) {
        return failToLog(who + " is not being logged", err);
    }
    const bool isEnding = current != nullptr && (request.kind == Kind::STOP || request.kind == Kind::TOGGLE);
    const std::uint32_t next = before.empty() ? 1 : before.back().number + 1;
    const Question question = {isEnding ? current->number : next, isEnding || request.kind == Kind::LAST};
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::LOG;
    message.log = request;
    const std::string error = platform::sendMessage(directory, process, message);
    if (!error.empty()) {
        return failToLog(error, err);
    }
    for (const Clock::time_point end = Clock::now() + PATIENCE; Clock::now() < end; usleep(POLL_PERIOD_US)) {
        if (const auto notice = answer(directory, process, question)) {
            return tell(process, *notice, out, err);
        }
        if (!platform::processStart(process)) {
            return fail(who + " has ended", err);
        }
    }
    const std::string obstacle = findObstacle(directory, process, true);
    return failToLog(
        who + ' ' +
            (obstacle.empty() ? "does not answer: its layer keeps no frame times, or it can write no "
                                "file in " +
                                    directory
                              : obstacle),
        err);
}

}  // namespace

ExitCode controlLog(const LogRequest& request, std::optional<pid_t> process, std::ostream& out,
                    std::ostream& err) {
    const ChosenOverlays chosen = chooseOverlays(process, Overlay::LOADED);
    if (!chosen.error.empty()) {
        return failToLog(chosen.error, err);
    }
    ExitCode result = SUCCESS;
    for (const pid_t each : chosen.processes) {
        const ExitCode answered = ask(chosen.directory, each, request, out, err);
        result = result == SUCCESS ? answered : result;
    }
    return result;
}

std::string printLogFile(const std::string& path, std::ostream& out) {
    dumps::Dump log;
    std::string error = dumps::readLog(path, log);
    if (!error.empty()) {
        return error;
    }
    const auto summary = dumps::summarizeLog(log);
    if (!summary) {
        return path + ": no frame was presented meanwhile";
    }
    dumps::printLogSummary(*summary, out);
    return {};
}

}  // namespace control
