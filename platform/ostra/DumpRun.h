#pragma once

#include "ostra/DumpFiles.h"
#include "ostra/DumpNotice.h"
#include "ostra/DumpPlan.h"
#include "ostra/FrameQueue.h"

#include <ostra/Ostra.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

/// One dump from its start to its end. Its own thread creates the folder and the files, writes the added
/// frames at least four times a second, and closes the files. The log and the dump's notice tell the folder,
/// the end, and the first error of a file operation, which also ends the dump. When the disk is too slow, the
/// newest frames are dropped, and the log says at the end how many.
class DumpRun {
public:
    /// Starts the dump; null when no thread can be started. Throws std::bad_alloc.
    static std::shared_ptr<DumpRun> start(const std::vector<Ostra::DumpWidgetMeta>& metas,
                                          const std::vector<const char*>& extraColumns, DumpPlan plan,
                                          const DumpSubjects& subjects = {});

    /// Use start().
    DumpRun(const std::vector<Ostra::DumpWidgetMeta>& metas, const std::vector<const char*>& extraColumns,
            DumpPlan plan, const DumpSubjects& subjects);

    /// Copies one frame. Never waits and never allocates. One thread at a time, and not after finish().
    void add(const Ostra::FrameDump& dump, const std::vector<double>& extraValues);

    /// Waits, but not longer than `patience`, until all added frames are in the files and the files are
    /// closed. Returns whether they are. May be called again.
    bool finish(std::chrono::milliseconds patience);

private:
    class Ending;

    void write();
    std::string writeFiles();
    std::string writeUntilFinished();
    std::string writeWaitingFrames();
    void tell(DumpNotice::State state);

    FrameQueue mQueue;

    // Only the writing thread uses these.
    const DumpPlan mPlan;
    DumpFiles mFiles;
    DumpNotice mNotice;

    std::atomic<bool> mHasEnded{false};  ///< the writing thread takes no more frames; relaxed order
    std::atomic<std::uint32_t> mDropped{0};

    std::mutex mMutex;  ///< guards the two flags below
    std::condition_variable mChanged;
    bool mIsFinishing = false;
    bool mIsDone = false;
};

}  // namespace platform
