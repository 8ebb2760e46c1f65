#pragma once

#include "ostra/DumpRun.h"

#include <ostra/Ostra.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

/// Which dump is running. One per process, see PerProcess.h; any thread. Nothing here waits longer than a
/// moment for a disk: a dump that does not end then is left to its thread, and until that has ended no other
/// one is started.
class DumpControl {
public:
    /// Starts a dump as planDump() has it. One that is still running is finished first. When none can be
    /// started, an error is logged and told by the dump's notice.
    void start(const std::vector<Ostra::DumpWidgetMeta>& metas);

    /// As Ostra::setExtraColumns() and Ostra::setExtraValues().
    void setExtraColumns(const std::vector<const char*>& names);
    void setExtraValues(const double* values, std::size_t count);

    /// Never waits for a disk.
    void add(const Ostra::FrameDump& dump);

    void finish();

    /// A child does not go on with its parent's dump.
    void onForked() {}

    /// Finishes a running dump, and takes the notice away.
    void onExit();

private:
    std::shared_ptr<DumpRun> stopAdding();
    void finish(std::chrono::milliseconds patience);

    std::mutex mOrder;  ///< starts one after the other; never held while waiting for a disk
    std::uint32_t mCount = 0;

    std::mutex mMutex;  ///< guards what follows; held for the copy of one frame at most
    std::shared_ptr<DumpRun> mRun;
    std::vector<const char*> mExtraColumns;
    std::vector<double> mExtraValues;
    bool mIsAdding = false;
    std::string mRuntimeDirectory;  ///< empty before the first dump
};

}  // namespace platform
