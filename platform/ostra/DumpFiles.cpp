#include "ostra/DumpFiles.h"

#include "ostra/Csv.h"
#include "ostra/FrameQueue.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace platform {

namespace {

constexpr std::uint32_t FLOAT_VALUE = 1;
constexpr std::size_t WRITE_SIZE = 65536;
constexpr mode_t FILE_MODE = 0644;

}  // namespace

OutputFile::~OutputFile() {
    close();
}

std::string OutputFile::fail(int error) {
    mBuffer.clear();
    return mPath + ": " + std::generic_category().message(error);
}

std::string OutputFile::open(const std::string& path) {
    mPath = path;
    mBuffer.reserve(WRITE_SIZE * 2);
    mDescriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, FILE_MODE);
    return mDescriptor < 0 ? fail(errno) : std::string();
}

std::string OutputFile::flush() {
    std::size_t written = 0;
    while (mDescriptor >= 0 && written < mBuffer.size()) {
        const ssize_t size = write(mDescriptor, mBuffer.data() + written, mBuffer.size() - written);
        if (size < 0 && errno != EINTR) {
            return fail(errno);
        }
        written += size > 0 ? static_cast<std::size_t>(size) : 0;
    }
    mBuffer.clear();
    return {};
}

std::string OutputFile::close() {
    std::string error = flush();
    if (mDescriptor >= 0) {
        const int descriptor = mDescriptor;
        mDescriptor = -1;
        if (::close(descriptor) != 0) {
            error = fail(errno);
        }
    }
    return error;
}

DumpFiles::DumpFiles(const std::vector<Ostra::DumpWidgetMeta>& metas) {
    mColumns.reserve(metas.size());
    for (const Ostra::DumpWidgetMeta& meta : metas) {
        mColumns.push_back({meta.name.string(), meta.valueType == FLOAT_VALUE});
    }
}

std::string DumpFiles::open(const std::string& directory) {
    std::error_code failure;
    std::filesystem::create_directories(directory, failure);
    if (failure) {
        return directory + ": " + failure.message();
    }
    std::string error = mFrames.open(directory + "/frames.csv");
    if (error.empty()) {
        error = mPasses.open(directory + "/passes.csv");
    }
    CsvWriter frames(mFrames.buffer());
    frames.add("FrameNumber");
    frames.add("TimestampMs");
    for (const Column& column : mColumns) {
        frames.add(column.name);
    }
    frames.add("RenderPassFrameId");
    frames.add("FrameDuration");
    frames.endRow();
    CsvWriter passes(mPasses.buffer());
    for (const char* const name :
         {"FrameNumber", "RenderPassFrameId", "Pass", "FirstValue", "SecondValue", "Duration"}) {
        passes.add(name);
    }
    passes.endRow();
    return error.empty() ? flush() : error;
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
    // The passes first: whoever reads along then finds every pass of a frame that is there.
    std::string error = mPasses.flush();
    return error.empty() ? mFrames.flush() : error;
}

std::string DumpFiles::close() {
    std::string error = mPasses.close();
    std::string framesError = mFrames.close();
    return error.empty() ? framesError : error;
}

}  // namespace platform
