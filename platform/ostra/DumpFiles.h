#pragma once

#include "io/OwnDescriptor.h"

#include <ostra/Ostra.h>

#include <string>
#include <vector>

namespace platform {

class CsvWriter;
class FrameQueue;

/// One file that is only written to. Should the application close its descriptor, it is opened anew. Every
/// operation returns an empty text, or "PATH: what went wrong"; after an error the file is closed and further
/// operations do nothing.
class OutputFile {
public:
    /// The file must not exist.
    std::string open(const std::string& path);

    /// What is to be written next.
    std::string& buffer() { return mBuffer; }

    /// Hands the buffer over to the system and empties it.
    std::string flush();

    std::string close();

private:
    std::string openWith(int flags);
    std::string fail(int error);

    std::string mPath;  ///< empty while no file is written
    OwnDescriptor mFile;
    std::string mBuffer;
};

/// The two files of a dump. frames.csv has a row for every frame: FrameNumber, TimestampMs, a column for
/// every dumpable value under its own name, RenderPassFrameId, FrameDuration, and the extra columns.
/// passes.csv has a row for every render pass of those frames that carry some: FrameNumber,
/// RenderPassFrameId, Pass (0, 1, ... in frame order), FirstValue, SecondValue, Duration. Durations are in
/// milliseconds. Values are integers or floats as their meta says; a value that a frame does not have is an
/// empty field. Errors are returned as by OutputFile.
class DumpFiles {
public:
    explicit DumpFiles(const std::vector<Ostra::DumpWidgetMeta>& metas,
                       const std::vector<const char*>& extraColumns = {});

    /// Creates both files in a folder where they are missing, and writes their first rows.
    std::string open(const std::string& folder);

    /// Appends the oldest frame of the queue, which is not empty.
    std::string append(const FrameQueue& frames);

    std::string flush();
    std::string close();

private:
    struct Column {
        std::string name;
        bool isFloat;
    };

    void writeFrame(const FrameQueue& frames);
    void writePasses(const FrameQueue& frames);

    std::vector<Column> mColumns;
    std::vector<std::string> mExtraColumns;
    OutputFile mFrames;
    OutputFile mPasses;
};

}  // namespace platform
