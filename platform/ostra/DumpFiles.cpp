#include "ostra/DumpFiles.h"

#include "io/PlainFile.h"
#include "ostra/Csv.h"
#include "ostra/FrameQueue.h"

#include <fcntl.h>

#include <cerrno>
#include <cmath>
#include <utility>

namespace platform {

namespace {

constexpr std::uint32_t FLOAT_VALUE = 1;
constexpr std::size_t WRITE_SIZE = 65536;
constexpr mode_t FILE_MODE = 0644;

}  // namespace

std::string OutputFile::fail(int error) {
    const std::string path = std::exchange(mPath, {});
    mBuffer.clear();
    mFile.close();
    return path + ": " + plainFileError(error);
}

std::string OutputFile::openWith(int flags) {
    const int descriptor = openPlainFile(mPath, O_WRONLY | O_APPEND | flags, FILE_MODE);
    if (descriptor < 0) {
        return fail(errno);
    }
    mFile = OwnDescriptor(descriptor);
    return {};
}

std::string OutputFile::open(const std::string& path) {
    mPath = path;
    mBuffer.reserve(WRITE_SIZE * 2);
    return openWith(O_CREAT | O_EXCL);
}

std::string OutputFile::flush() {
    if (mPath.empty() || mBuffer.empty()) {
        return {};
    }
    if (mFile.get() < 0) {
        std::string error = openWith(0);
        if (!error.empty()) {
            return error;
        }
    }
    const int error = writeAll(mFile.get(), mBuffer);
    mBuffer.clear();
    return error == 0 ? std::string() : fail(error);
}

std::string OutputFile::close() {
    std::string error = flush();
    const int closeError = mFile.close();
    if (error.empty() && closeError != 0) {
        error = fail(closeError);
    }
    mPath.clear();
    return error;
}

DumpFiles::DumpFiles(const std::vector<Ostra::DumpWidgetMeta>& metas,
                     const std::vector<const char*>& extraColumns, DumpSubjects subjects)
    : mExtraColumns(extraColumns.begin(), extraColumns.end()), mSubjects(std::move(subjects)) {
    mColumns.reserve(metas.size());
    for (const Ostra::DumpWidgetMeta& meta : metas) {
        mColumns.push_back({meta.name.string(), meta.valueType == FLOAT_VALUE});
    }
}

std::string DumpFiles::open(const std::string& folder) {
    std::string error = mFrames.open(folder + "/frames.csv");
    if (error.empty()) {
        error = mPasses.open(folder + "/passes.csv");
    }
    CsvWriter frames(mFrames.buffer());
    frames.add("FrameNumber");
    frames.add("TimestampMs");
    for (const Column& column : mColumns) {
        frames.add(column.name);
    }
    frames.add("RenderPassFrameId");
    frames.add("FrameDuration");
    for (const std::string& column : mExtraColumns) {
        frames.add(column);
    }
    frames.endRow();
    CsvWriter passes(mPasses.buffer());
    for (const char* const name :
         {"FrameNumber", "RenderPassFrameId", "Pass", "FirstValue", "SecondValue", "Duration"}) {
        passes.add(name);
    }
    passes.endRow();
    if (error.empty()) {
        error = writeSubjects(folder);
    }
    return error.empty() ? flush() : error;
}

std::string DumpFiles::writeSubjects(const std::string& folder) const {
    if (mSubjects.empty()) {
        return {};
    }
    OutputFile file;
    std::string error = file.open(folder + "/about.csv");
    CsvWriter rows(file.buffer());
    for (const auto& [name, text] : mSubjects) {
        rows.add(name);
        rows.add(text);
        rows.endRow();
    }
    const std::string closeError = file.close();
    return error.empty() ? closeError : error;
}

void DumpFiles::writeFrame(const FrameQueue& frames) {
    const FrameQueue::Frame& frame = *frames.front();
    CsvWriter row(mFrames.buffer());
    row.add(frame.frameNumber);
    row.add(frame.timestampMs);
    for (std::size_t i = 0; i < mColumns.size(); ++i) {
        if (i >= frame.valueCount) {
            row.add(std::string_view());
        } else if (mColumns[i].isFloat) {
            row.add(frames.value(i).floatValue);
        } else {
            row.add(frames.value(i).intValue);
        }
    }
    row.add(frame.renderPassFrameId);
    row.add(frame.frameDuration);
    for (std::size_t i = 0; i < mExtraColumns.size(); ++i) {
        const double value = frames.extraValue(i);
        if (std::isnan(value)) {
            row.add(std::string_view());
        } else {
            row.add(value);
        }
    }
    row.endRow();
}

void DumpFiles::writePasses(const FrameQueue& frames) {
    const FrameQueue::Frame& frame = *frames.front();
    CsvWriter row(mPasses.buffer());
    for (std::uint32_t i = 0; i < frame.passCount; ++i) {
        const Ostra::DumpRenderpassValue& pass = frames.pass(i);
        row.add(frame.frameNumber);
        row.add(frame.renderPassFrameId);
        row.add(std::uint64_t{i});
        row.add(pass.firstValue);
        row.add(pass.secondValue);
        row.add(pass.duration);
        row.endRow();
    }
}

std::string DumpFiles::append(const FrameQueue& frames) {
    writeFrame(frames);
    writePasses(frames);
    const bool isMuch = mFrames.buffer().size() > WRITE_SIZE || mPasses.buffer().size() > WRITE_SIZE;
    return isMuch ? flush() : std::string();
}

std::string DumpFiles::flush() {
    // Passes first, so that somebody who reads along finds all passes of every frame in frames.csv.
    std::string error = mPasses.flush();
    return error.empty() ? mFrames.flush() : error;
}

std::string DumpFiles::close() {
    std::string error = mPasses.close();
    std::string framesError = mFrames.close();
    return error.empty() ? framesError : error;
}

}  // namespace platform
