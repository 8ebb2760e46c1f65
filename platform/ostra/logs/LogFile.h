#pragma once

#include "ostra/DumpFiles.h"
#include "ostra/logs/FrameRing.h"

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

/// A log: a file with a row for each frame, in the form of a dump's frames.csv. Its columns are FrameNumber,
/// TimestampMs (when the frame ended, milliseconds since 1970), FrameTime(ms), SwapTime(ms), GpuTime(ms),
/// OverlayTime(ms), and the named ones with the values that held then. A field is empty where nobody knows.
/// One thread; errors are returned as by OutputFile.
class LogFile {
public:
    /// All arguments must outlive the log.
    LogFile(const FrameRing& ring, const std::vector<const char*>& columns);

    /// Creates a new file in the folder, which is created if need be, with a name that begins with `name`.
    std::string open(const std::string& folder, const std::string& name);

    /// Empty unless the file was created.
    const std::string& path() const { return mPath; }

    /// The frame must be a later one than those before it.
    void add(std::uint32_t number, const FrameRing::Frame& frame);

    std::uint64_t frames() const { return mFrames; }

    std::string flush() { return mFile.flush(); }
    std::string close() { return mFile.close(); }

private:
    const FrameRing& mRing;
    const std::vector<const char*>& mColumns;
    std::int64_t mOpenedAtMs;  ///< since 1970
    std::uint32_t mOpenedAt;   ///< the same in ticks
    std::string mPath;
    OutputFile mFile;
    std::uint64_t mFrames = 0;
    std::uint32_t mRow = 0;
    std::vector<double> mValues;
};

}  // namespace platform
