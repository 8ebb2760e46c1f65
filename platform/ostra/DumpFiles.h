#pragma once

#include "io/OwnDescriptor.h"

#include <ostra/Ostra.h>

#include <map>
#include <string>
#include <vector>

namespace platform {

class CsvWriter;
class FrameQueue;

/// One file that we only write to. If the application closes its descriptor, the file is opened again. Every
/// operation returns an empty text, or "PATH: what went wrong"; after an error the file is closed and later
/// operations do nothing.
class OutputFile {
public:
    /// Creates the file; fails if it exists.
    std::string open(const std::string& path);

    /// The bytes that the next flush() will write.
    std::string& buffer() { return mBuffer; }

    /// Writes the buffer and empties it.
    std::string flush();

    std::string close();

private:
    std::string openWith(int flags);
    std::string fail(int error);

    std::string mPath;  ///< empty while no file is open
    OwnDescriptor mFile;
    std::string mBuffer;
};

/// What a dump is of: texts by their names.
using DumpSubjects = std::map<std::string, std::string>;

/// The files of a dump. frames.csv has a row for every frame: FrameNumber, TimestampMs, a column for
/// every dumpable value under its own name, RenderPassFrameId, FrameDuration, and the extra columns.
/// passes.csv has a row for every render pass of those frames: FrameNumber, RenderPassFrameId, Pass (0, 1,
/// ... in frame order), FirstValue, SecondValue, Duration. Durations are in milliseconds. Values are integers
/// or floats as their meta says; a field is empty when the frame does not have that value. Errors are
/// returned as by OutputFile.
/// about.csv, if there is something to say, has a row for each subject: its name and its text.
class DumpFiles {
public:
    explicit DumpFiles(const std::vector<Ostra::DumpWidgetMeta>& metas,
                       const std::vector<const char*>& extraColumns = {}, DumpSubjects subjects = {});

    /// Creates both files, which must not exist, in an existing folder, and writes the header rows.
    std::string open(const std::string& folder);

    /// Writes the oldest frame of the queue, which must not be empty.
    std::string append(const FrameQueue& frames);

    std::string flush();
    std::string close();

private:
    struct Column {
        std::string name;
        bool isFloat;
    };

    std::string writeSubjects(const std::string& folder) const;
    void writeFrame(const FrameQueue& frames);
    void writePasses(const FrameQueue& frames);

    std::vector<Column> mColumns;
    std::vector<std::string> mExtraColumns;
    DumpSubjects mSubjects;
    OutputFile mFrames;
    OutputFile mPasses;
};

}  // namespace platform
