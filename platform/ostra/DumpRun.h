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

/// One dump from its start to its end. A thread of its own makes the folder and the files, writes what was
/// added at least four times a second, and closes them. The folder, the end and the first error of any file
/// operation, which ends the dump, are told in the log and by the dump's notice. Frames that the disk is too
/// slow for are dropped, the newest first, and their number logged at the end.
class DumpRun {
public:
    /// Starts the dump; null when no thread can be had. Throws std::bad_alloc.
    static std::shared_ptr<DumpRun> start(const std::vector<Ostra::DumpWidgetMeta>& metas,
                                          const std::vector<const char*>& extraColumns, DumpPlan plan);

    /// Use start().
    DumpRun(const std::vector<Ostra::DumpWidgetMeta>& metas, const std::vector<const char*>& extraColumns,
            DumpPlan plan);

    /// Copies one frame. Never waits and never allocates. One thread at a time, and not after finish().
    void add(const Ostra::FrameDump& dump, const std::vector<double>& extraValues);

    /// Waits until everything that was added is in the files and they are closed, but not longer than
    /// `patience`. Returns whether they are. May be called again.
    bool finish(std::chrono::milliseconds patience);

private:
    class Ending;

    void write();
    std::string writeFiles();
    std::string writeUntilFinished();
    std::string writeWaitingFrames();
    void tell(DumpNotice::State state);

    FrameQueue mQueue;

    // Of the writing thread only.
    const DumpPlan mPlan;
    DumpFiles mFiles;
    DumpNotice mNotice;

    std::atomic<bool> mHasEnded{false};  ///< the writing thread takes no more; relaxed order
    std::atomic<std::uint32_t> mDropped{0};

    std::mutex mMutex;  ///< guards the two flags below
    std::condition_variable mChanged;
    bool mIsFinishing = false;
    bool mIsDone = false;
};

}  // namespace platform
