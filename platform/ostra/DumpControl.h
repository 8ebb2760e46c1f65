#pragma once

#include "ostra/DumpRun.h"

#include <ostra/Ostra.h>

#include <memory>
#include <mutex>
#include <vector>

namespace platform {

/// Which dump is running. One per process, see PerProcess.h; any thread.
class DumpControl {
public:
    /// Starts a dump into the directory that KORDANIX_DUMP_DIR names, else the working directory. One that
    /// is still running is finished first.
    void start(const std::vector<Ostra::DumpWidgetMeta>& metas);

    /// Never waits for a disk.
    void add(const Ostra::FrameDump& dump);

    void finish();

    /// A child does not go on with its parent's dump.
    void onForked() {}

    /// Finishes a running dump, but does not let a disk that hangs hold up the exit for long.
    void onExit();

private:
    void finishLocked();
    std::shared_ptr<DumpRun> stopAdding();

    std::mutex mOrder;  ///< starts and finishes one after the other; may be held while the disk works
    std::mutex mMutex;  ///< guards what follows; held for the copy of one frame at most
    std::shared_ptr<DumpRun> mRun;
    bool mIsAdding = false;
};

}  // namespace platform
