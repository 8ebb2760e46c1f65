#include "logs/RunLog.h"

#include "Diagnostic.h"
#include "dumps/DumpReader.h"
#include "logs/LogCommand.h"
#include "ostra/logs/LogNotice.h"
#include "processes/ProcessInfo.h"
#include "runs/LogPlan.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <system_error>

namespace control {

namespace {

using platform::LogNotice;

constexpr double MAX_SECONDS = 86400.0;
constexpr std::chrono::seconds END_PATIENCE(3);

std::uint32_t toMilliseconds(double seconds) {
    return static_cast<std::uint32_t>(std::clamp(seconds, 0.0, MAX_SECONDS) * 1000.0);
}

/// All logs of a run with their processes.
std::vector<std::pair<pid_t, LogNotice>> logsOf(const std::string& runFolder) {
    std::vector<std::pair<pid_t, LogNotice>> logs;
    for (const pid_t process : platform::processesWithLogs(runFolder)) {
        for (LogNotice& notice : platform::readLogNotices(runFolder, process)) {
            logs.emplace_back(process, std::move(notice));
        }
    }
    return logs;
}

}  // namespace

ExitCode RunLog::prepare(std::ostream& err) {
    ExitCode result = SUCCESS;
    for (const std::string& text : mOptions.failIf) {
        std::string error;
        if (auto check = parseLogCheck(text, error)) {
            mChecks.push_back(std::move(*check));
        } else {
            result = fail(error, err, USAGE_ERROR);
        }
    }
    if (result == SUCCESS && !mOptions.folder.empty()) {
        std::error_code failure;
        mOptions.folder = std::filesystem::absolute(mOptions.folder, failure).lexically_normal();
        std::filesystem::create_directories(mOptions.folder, failure);
        if (failure) {
            result = fail(mOptions.folder + ": " + failure.message(), err);
        }
    }
    return result;
}

std::string RunLog::tellRun(const std::string& runFolder) {
    mRunFolder = runFolder;
    if (!mOptions.isWanted && mOptions.folder.empty()) {
        return {};
    }
    platform::LogPlan plan;
    plan.folder = mOptions.folder;
    plan.isStarted = mOptions.isWanted;
    plan.afterMs = toMilliseconds(mOptions.after);
    if (mOptions.length) {
        plan.forMs = toMilliseconds(*mOptions.length);
    }
    const int error = platform::writeLogPlan(runFolder, plan);
    return error == 0 ? std::string()
                      : "cannot write into " + runFolder + ": " + std::generic_category().message(error);
}

RunLog::~RunLog() {
    if (mTimer >= 0) {
        close(mTimer);
    }
}

void RunLog::onStarted(pid_t program) {
    mProgram = program;
    if (mOptions.length && !mChecks.empty()) {
        constexpr timespec TICK = {0, 100'000'000};
        const itimerspec ticks = {TICK, TICK};
        mTimer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
        timerfd_settime(mTimer, 0, &ticks, nullptr);
    }
}

void RunLog::attend() {
    std::uint64_t ticks = 0;
    if (read(mTimer, &ticks, sizeof(ticks)) != sizeof(ticks)) {
        return;
    }
    if (mStep == 0) {
        const auto logs = logsOf(mRunFolder);
        if (logs.empty() || logs.front().second.state == LogNotice::State::RUNNING) {
            return;
        }
        // In another process namespace the number may be somebody else's.
        const pid_t logged = logs.front().first;
        const bool isOurs = environmentVariable(logged, "KORDANIX_RUNTIME_DIR") == mRunFolder;
        mLogged = isOurs ? logged : mProgram;
    } else if (Clock::now() < mNextStep) {
        return;
    }
    kill(mStep == 0 ? mLogged : mProgram, mStep < 2 ? SIGTERM : SIGKILL);
    ++mStep;
    mNextStep = Clock::now() + END_PATIENCE;
}

std::optional<ExitCode> RunLog::finish(std::ostream& err) const {
    const auto logs = logsOf(mRunFolder);
    std::optional<dumps::LogSummary> first;
    for (const auto& [process, notice] : logs) {
        if (notice.state == LogNotice::State::FAILED) {
            printDiagnostic("a log failed: " + notice.error, err);
        }
        dumps::Dump log;
        if (notice.path.empty() || !dumps::readLog(notice.path, log).empty()) {
            continue;
        }
        printDiagnostic("logged into " + notice.path, err);
        const auto summary = dumps::summarizeLog(log);
        if (summary) {
            dumps::printLogSummary(*summary, err);
            first = first ? first : summary;
        } else {
            err << "  no frame was presented meanwhile\n";
        }
    }
    if (!first && mOptions.isWanted) {
        const std::string reason = "no frame was logged";
        return mChecks.empty() ? (printDiagnostic(reason, err), std::optional<ExitCode>())
                               : fail(reason + ", so that no condition can be checked", err);
    }
    if (mChecks.empty()) {
        return std::nullopt;
    }
    const ExitCode checked = check(*first, err);
    return checked != SUCCESS || mStep > 0 ? std::optional(checked) : std::nullopt;
}

ExitCode RunLog::check(const dumps::LogSummary& summary, std::ostream& err) const {
    ExitCode result = SUCCESS;
    for (const LogCheck& each : mChecks) {
        if (holds(each, summary).value_or(true)) {
            result = fail(each.text + ": it is " + valueText(each, summary), err);
        }
    }
    return result;
}

}  // namespace control
