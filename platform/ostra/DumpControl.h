#pragma once

#include "ostra/DumpRun.h"

#include <ostra/Ostra.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

/// Knows which dump is running. One per process, see PerProcess.h; any thread. No function waits longer than
/// a moment for a disk: a dump that does not finish in time is left to its thread, and no other dump starts
/// until that thread has ended.
class DumpControl {
public:
    /// Starts a dump where planDump() says. Finishes a running one first. When no dump can be started, it
    /// logs an error and writes it into the dump's notice.
    void start(const std::vector<Ostra::DumpWidgetMeta>& metas);

    /// As Ostra::setExtraColumns(), Ostra::setExtraValues() and Ostra::setDumpSubject().
    void setExtraColumns(const std::vector<const char*>& names);
    void setExtraValues(const double* values, std::size_t count);
    void setSubject(const std::string& name, const std::string& text);

    /// Never waits for a disk.
    void add(const Ostra::FrameDump& dump);

    void finish();

    /// A forked child does not continue its parent's dump.
    void onForked() {}

    /// Finishes a running dump and removes the notice.
    void onExit();

private:
    std::shared_ptr<DumpRun> stopAdding();
    void finish(std::chrono::milliseconds patience);

    std::mutex mOrder;  ///< makes starts wait for each other; never held while waiting for a disk
    std::uint32_t mCount = 0;

    std::mutex mMutex;  ///< guards the members below; held no longer than one frame takes to copy
    std::shared_ptr<DumpRun> mRun;
    std::vector<const char*> mExtraColumns;
    std::vector<double> mExtraValues;
    DumpSubjects mSubjects;
    bool mIsAdding = false;
    std::string mRuntimeDirectory;  ///< empty before the first dump
};

}  // namespace platform
