#pragma once

#include "figures/Reading.h"
#include "figures/sources/MachineFigures.h"

#include <cstdint>
#include <memory>

namespace figures {

/// Reads the machine's figures for this process on one thread of its own, twice a second while frames are
/// drawn, and only those that are wanted. The frame thread takes finished numbers. All operations are the
/// frame thread's.
///
/// Nobody ever waits for the thread: a driver may hold it for as long as it likes. It takes none of the
/// application's signals. In a forked child, which has none of its parent's threads, it is asked for anew.
class MachineReader {
public:
    MachineReader();

    /// Tells the thread to end.
    ~MachineReader();

    MachineReader(const MachineReader&) = delete;
    MachineReader& operator=(const MachineReader&) = delete;

    /// From the next reading on; the others become empty. The thread runs while something is wanted. When no
    /// thread can be had, later frames ask for one again, at most once a second.
    void want(const sources::Wanted& wanted);

    /// `elapsedUs` microseconds were drawn since the last call. A program that draws nothing is not measured.
    /// Takes no lock.
    void onFrames(double elapsedUs);

    /// The last reading. Takes no lock.
    Reading value(sources::Id id) const;

    /// Whether the fan's figure is percent of its fastest instead of turns a minute.
    bool isFanInPercent() const;

    /// The name of the GPU that the process works with where the machine has another one; else empty. Lives
    /// as long as the reader.
    const char* gpuName() const;

    /// Waits for a whole reading from now on, but not longer than a driver may take to hang: for pictures and
    /// checks that must not depend on timing.
    void settle();

private:
    struct Shared;

    void start();
    bool isForked() const;

    std::shared_ptr<Shared> mShared;
    sources::Wanted mWanted;
    double mSinceStartUs = 0.0;
    bool mIsStartOpen = false;  // a thread is wanted and could not be had
    unsigned int mForks = 0;    // before the thread was started
};

}  // namespace figures
