#pragma once

#include "ostra/DumpFiles.h"
#include "ostra/FrameQueue.h"

#include <ostra/Ostra.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// One dump from its start to its end. A thread of its own opens the files, writes what was added at least
/// four times a second, and closes them. The first error of any file operation is logged and ends the dump.
/// Frames that the disk is too slow for are dropped, the newest first, and their number logged at the end.
class DumpRun {
public:
    /// Starts the dump; null, with an error logged, when no thread can be had.
    static std::shared_ptr<DumpRun> start(const std::vector<Ostra::DumpWidgetMeta>& metas,
                                          const std::string& directory);

    /// Use start().
    DumpRun(const std::vector<Ostra::DumpWidgetMeta>& metas, std::string directory);

    /// Copies one frame. Never waits and never allocates. One thread at a time, and not after finish().
    void add(const Ostra::FrameDump& dump);

    /// Waits until everything that was added is in the files and they are closed, but not longer than
    /// `patience` when there is one. May be called again.
    void finish(std::optional<std::chrono::milliseconds> patience = std::nullopt);

private:
    void write();
    std::string writeUntilFinished();
    std::string writeWaitingFrames();

    FrameQueue mQueue;
    DumpFiles mFiles;  ///< writing thread only
    std::string mDirectory;

    std::atomic<bool> mHasEnded{false};  ///< the writing thread takes no more; relaxed order
    std::atomic<std::uint32_t> mDropped{0};

    std::mutex mMutex;  ///< guards the two flags below
    std::condition_variable mChanged;
    bool mIsFinishing = false;
    bool mIsDone = false;
};

}  // namespace platform
