#include "ostra/logs/LogWriter.h"

#include "io/RecordName.h"
#include "ostra/LogTag.h"
#include "properties/RuntimeDirectory.h"

#include <android/log.h>

#include <utility>

namespace platform {

namespace {

/// The GPU's time of a frame is known after a few more frames.
constexpr std::uint32_t SETTLED_TICKS = FrameRing::TICKS_PER_SECOND / 4;

std::uint32_t toTicks(std::uint32_t milliseconds) {
    return milliseconds * (FrameRing::TICKS_PER_SECOND / 1000);
}

}  // namespace

LogWriter::LogWriter(const FrameRing& ring, const std::vector<const char*>& columns, std::string folder,
                     std::string folderError)
    : mRing(ring), mColumns(columns), mFolder(std::move(folder)), mFolderError(std::move(folderError)) {}

void LogWriter::readPlan() {
    std::string ignored;
    const std::string* const directory = ownRuntimeDirectory(ignored);
    mRuntimeDirectory = directory == nullptr ? std::string() : *directory;
    LogPlan plan = readLogPlan(mRuntimeDirectory);
    if (!plan.folder.empty()) {
        mFolder = plan.folder;
    }
    if (plan.isStarted) {
        mPlan = std::move(plan);
    }
}

void LogWriter::handle(const LogRequest& request) {
    using Kind = LogRequest::Kind;
    if (!std::exchange(mIsPlanRead, true)) {
        readPlan();
    }
    const std::uint32_t now = FrameRing::now();
    if (request.kind == Kind::LAST) {
        const auto log = begin(now - request.seconds * FrameRing::TICKS_PER_SECOND, "-last");
        log->until = now;
        write(*log, true);
    } else if (mLog == nullptr && request.kind != Kind::STOP) {
        mPlan.reset();
        mLog = begin(now, "");
    } else if (mLog != nullptr && request.kind != Kind::START) {
        mLog->until = now;
    }
}

bool LogWriter::step(bool isLast) {
    if (!std::exchange(mIsPlanRead, true)) {
        readPlan();
    }
    beginPlanned();
    if (mLog != nullptr) {
        write(*mLog, isLast);
        if (mNotices[mLog->notice].state != LogNotice::State::RUNNING) {
            mLog.reset();
        }
    }
    return mLog != nullptr || mPlan;
}

/// Times begin with the first frame, which may be long after the program's start.
void LogWriter::beginPlanned() {
    FrameRing::Frame first;
    if (!mPlan || mRing.count() == 0 || !mRing.read(mRing.oldest(), first)) {
        return;
    }
    const std::uint32_t from = first.end + toTicks(mPlan->afterMs);
    if (FrameRing::ticksBetween(from, FrameRing::now()) < 0) {
        return;
    }
    mLog = begin(from - 1, "");
    if (mPlan->forMs) {
        mLog->until = from + toTicks(*mPlan->forMs);
    }
    mPlan.reset();
}

/// A log of the frames that end after a moment.
std::unique_ptr<LogWriter::Log> LogWriter::begin(std::uint32_t from, const std::string& suffix) {
    auto log = std::make_unique<Log>(Log{{mRing, mColumns}, firstAfter(from), std::nullopt, mNotices.size()});
    mNotices.emplace_back();
    mNotices.back().number = static_cast<std::uint32_t>(mNotices.size());
    const std::string error = mFolder.empty() ? mFolderError : log->file.open(mFolder, recordName() + suffix);
    if (error.empty()) {
        __android_log_print(ANDROID_LOG_INFO, TAG, "Frame times are logged into %s",
                            log->file.path().c_str());
        tell(*log, LogNotice::State::RUNNING, {});
    } else {
        end(*log, error);
    }
    return log;
}

void LogWriter::write(Log& log, bool isLast) {
    if (mNotices[log.notice].state != LogNotice::State::RUNNING) {
        return;
    }
    const std::uint32_t settled = FrameRing::now() - SETTLED_TICKS;
    const auto isOver = [&](std::uint32_t moment) {
        return log.until && FrameRing::ticksBetween(*log.until, moment) > 0;
    };
    bool hasCaughtUp = false;
    for (; log.next != mRing.count(); ++log.next) {
        FrameRing::Frame frame;
        if (!mRing.read(log.next, frame)) {
            const std::uint32_t oldest = mRing.oldest();
            log.next = static_cast<std::int32_t>(oldest - log.next) > 0 ? oldest - 1 : log.next;
            continue;  // the disk is too slow; the numbers show the gap
        }
        hasCaughtUp = isOver(frame.end);
        if (hasCaughtUp || (!isLast && FrameRing::ticksBetween(frame.end, settled) < 0)) {
            break;
        }
        log.file.add(log.next, frame);
    }
    const std::string error = log.file.flush();
    if (!error.empty() || isLast || (log.until && (hasCaughtUp || isOver(settled)))) {
        end(log, error);
    }
}

void LogWriter::end(Log& log, const std::string& error) {
    const std::string closeError = log.file.close();
    const std::string& first = error.empty() ? closeError : error;
    if (!first.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "The log of frame times ends: %s", first.c_str());
    }
    tell(log, first.empty() ? LogNotice::State::DONE : LogNotice::State::FAILED, first);
}

void LogWriter::tell(const Log& log, LogNotice::State state, const std::string& error) {
    LogNotice& notice = mNotices[log.notice];
    notice.state = state;
    notice.frames = log.file.frames();
    notice.path = log.file.path();
    notice.error = error;
    writeLogNotices(mRuntimeDirectory, mNotices);
}

std::uint32_t LogWriter::firstAfter(std::uint32_t moment) const {
    std::uint32_t number = mRing.count();
    FrameRing::Frame frame;
    while (number != mRing.oldest() && mRing.read(number - 1, frame) &&
           FrameRing::ticksBetween(moment, frame.end) > 0) {
        --number;
    }
    return number;
}

}  // namespace platform
