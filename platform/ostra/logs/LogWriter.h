#pragma once

#include "ostra/logs/FrameRing.h"
#include "ostra/logs/LogFile.h"
#include "ostra/logs/LogNotice.h"
#include "ostra/logs/LogRequest.h"
#include "runs/LogPlan.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// Writes this process's logs from the ring, and its notices. There is at most one log at a time, and with
/// LAST another one, which is over at once. What goes wrong ends the log, is in the log of messages, and in
/// the notice. On a thread of its own.
class LogWriter {
public:
    /// The ring and the columns must outlive the writer. `folder` is where logs go if the run does not say
    /// so; when it is empty, `folderError` says why.
    LogWriter(const FrameRing& ring, const std::vector<const char*>& columns, std::string folder,
              std::string folderError);

    void handle(const LogRequest& request);

    /// Call it some times a second: begins and ends the log of the run's plan, and writes the frames whose
    /// times are all known by now; with `isLast` all. Returns whether there will be more to do.
    bool step(bool isLast);

    /// Whether a log is being written.
    bool isLogging() const { return mLog != nullptr; }

private:
    /// A log: the frames that end after one moment, and not after another one.
    struct Log {
        LogFile file;
        std::uint32_t next;                  ///< number of the next frame
        std::optional<std::uint32_t> until;  ///< in ticks
        std::size_t notice;                  ///< its index
    };

    void readPlan();
    void beginPlanned();
    std::unique_ptr<Log> begin(std::uint32_t from, const std::string& suffix);
    void write(Log& log, bool isLast);
    void end(Log& log, const std::string& error);
    void tell(const Log& log, LogNotice::State state, const std::string& error);
    std::uint32_t firstAfter(std::uint32_t moment) const;

    const FrameRing& mRing;
    const std::vector<const char*>& mColumns;
    std::string mFolder;
    std::string mFolderError;
    std::string mRuntimeDirectory;
    std::optional<LogPlan> mPlan;  ///< as far as it has still to be followed; nothing before it was read
    bool mIsPlanRead = false;
    std::vector<LogNotice> mNotices;
    std::unique_ptr<Log> mLog;
};

}  // namespace platform
