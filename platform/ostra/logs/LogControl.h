#pragma once

#include "ostra/logs/FrameRing.h"
#include "ostra/logs/LogWriter.h"

#include <ostra/FrameLog.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

/// This process's logs of frame times: keeps the last frames always, and has a thread of its own while there
/// is something to write. One per process, see PerProcess.h.
class LogControl {
public:
    /// As those of ostra/FrameLog.h, on the thread that presents frames. Without memory for the last frames
    /// there are no logs, which is said once.
    void setColumns(const std::vector<const char*>& names);
    void setValues(const double* values, std::size_t count);
    std::uint32_t add(const Ostra::LoggedFrame& frame);
    void setGpu(std::uint32_t frame, std::uint64_t nanoseconds);

    /// Relaxed order: it only says whether times are worth measuring. Any thread.
    bool isLogging() const { return mIsLogging.load(std::memory_order_relaxed); }

    /// Any thread. Never waits for a disk.
    void request(const LogRequest& request);

    /// A forked child has no logs of its parent's.
    void onForked() {}

    /// Writes what is not written yet, for a second at most, and removes the notices unless `run` reads them.
    void onExit();

private:
    void startPlanned();
    void startLocked();
    void work();
    void workUntilIdle();

    std::atomic<FrameRing*> mRing{nullptr};  ///< never destroyed; release and acquire
    std::atomic<bool> mIsLogging{false};
    bool mHasFrames = false;  // of the presenting thread
    std::vector<const char*> mColumns;

    std::mutex mMutex;  ///< guards what follows; never held while writing
    std::condition_variable mChanged;
    std::string mFolder;
    std::string mFolderError;
    std::vector<LogRequest> mRequests;
    bool mIsWorking = false;
    bool mIsExiting = false;

    std::unique_ptr<LogWriter> mWriter;  ///< of the thread while it works
};

}  // namespace platform
