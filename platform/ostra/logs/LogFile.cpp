#include "ostra/logs/LogFile.h"

#include "io/PlainFile.h"
#include "ostra/Csv.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

namespace platform {

namespace {

constexpr int MAX_FILES_A_SECOND = 1000;
constexpr std::int64_t TICKS_PER_MS = FrameRing::TICKS_PER_SECOND / 1000;

std::int64_t wallClockMs() {
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

void addMilliseconds(CsvWriter& row, std::uint32_t tenths) {
    constexpr double TENTHS_PER_MS = 10000.0;
    if (tenths == FrameRing::NOT_MEASURED) {
        row.add("");
    } else {
        row.add(static_cast<double>(tenths) / TENTHS_PER_MS);
    }
}

}  // namespace

LogFile::LogFile(const FrameRing& ring, const std::vector<const char*>& columns)
    : mRing(ring),
      mColumns(columns),
      mOpenedAtMs(wallClockMs()),
      mOpenedAt(FrameRing::now()),
      mValues(columns.size(), std::numeric_limits<double>::quiet_NaN()) {}

std::string LogFile::open(const std::string& folder, const std::string& name) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) {
        return folder + ": " + failure.message();
    }
    const std::string beginning = folder + '/' + name;
    for (int i = 1; i <= MAX_FILES_A_SECOND; ++i) {
        std::string path = beginning;
        path += i == 1 ? std::string() : '-' + std::to_string(i);
        path += ".csv";
        if (i < MAX_FILES_A_SECOND && access(path.c_str(), F_OK) == 0) {
            continue;
        }
        std::string error = mFile.open(path);
        if (!error.empty()) {
            return error;
        }
        mPath = std::move(path);
        break;
    }
    CsvWriter row(mFile.buffer());
    for (const char* const column :
         {"FrameNumber", "TimestampMs", "FrameTime(ms)", "SwapTime(ms)", "GpuTime(ms)", "OverlayTime(ms)"}) {
        row.add(column);
    }
    for (const char* const column : mColumns) {
        row.add(column);
    }
    row.endRow();
    return flush();
}

void LogFile::add(std::uint32_t number, const FrameRing::Frame& frame) {
    mRing.readValues(frame.end, mRow, mValues);
    CsvWriter row(mFile.buffer());
    row.add(std::uint64_t{number} + 1);
    row.add(mOpenedAtMs + FrameRing::ticksBetween(mOpenedAt, frame.end) / TICKS_PER_MS);
    for (const std::uint32_t tenths : {frame.total, frame.swap, frame.gpu, frame.overlay}) {
        addMilliseconds(row, tenths);
    }
    for (const double value : mValues) {
        if (std::isnan(value)) {
            row.add("");
        } else {
            row.add(value);
        }
    }
    row.endRow();
    ++mFrames;
}

}  // namespace platform
