#pragma once

#include "ExitCode.h"
#include "logs/LogCheck.h"
#include "processes/Attendant.h"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace control {

/// What the user wants of the logs of a program that 'run' starts.
struct LogOptions {
    bool isWanted = false;            ///< begin one by itself
    std::string folder;               ///< of all logs; empty: the usual one
    double after = 0.0;               ///< seconds after the first frame
    std::optional<double> length;     ///< seconds
    std::vector<std::string> failIf;  ///< conditions, see LogCheck
};

/// The logs of one run, seen from the program's parent. With a condition and a length it ends the program
/// when its log has been written, since somebody waits for the verdict: it asks the process that was logged
/// first, then the program, and insists after some seconds.
class RunLog : public Attendant {
public:
    explicit RunLog(LogOptions options) : mOptions(std::move(options)) {}
    ~RunLog() override;
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

    /// Understands the conditions, and creates the folder that the user named. Says what is wrong on `err`.
    ExitCode prepare(std::ostream& err);

    /// Tells the processes of the run, by a file in its folder. Returns what went wrong, or an empty text.
    std::string tellRun(const std::string& runFolder);

    int descriptor() const override { return mTimer; }
    void onStarted(pid_t program) override;
    void attend() override;

    /// After the end: prints the figures of every log, and which conditions hold. Returns FAILURE when one
    /// does or cannot be told, SUCCESS when they were the reason for ending the program, else nothing.
    std::optional<ExitCode> finish(std::ostream& err) const;

private:
    using Clock = std::chrono::steady_clock;

    ExitCode check(const dumps::LogSummary& summary, std::ostream& err) const;

    LogOptions mOptions;
    std::vector<LogCheck> mChecks;
    std::string mRunFolder;
    pid_t mProgram = 0;
    pid_t mLogged = 0;  ///< the process to be ended
    int mTimer = -1;    ///< ticks some times a second
    int mStep = 0;      ///< of insisting
    Clock::time_point mNextStep;
};

}  // namespace control
