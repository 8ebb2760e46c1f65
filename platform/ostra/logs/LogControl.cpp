#include "ostra/logs/LogControl.h"

#include "ostra/HelperThread.h"
#include "ostra/LogTag.h"
#include "properties/RuntimeDirectory.h"
#include "runs/LogPlan.h"
#include "runs/RunFolder.h"

#include <android/log.h>
#include <unistd.h>

#include <chrono>
#include <exception>
#include <new>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::milliseconds PERIOD{100};
constexpr std::chrono::milliseconds LOG_PATIENCE{1000};

}  // namespace

void LogControl::setColumns(const std::vector<const char*>& names) {
    if (mRing.load(std::memory_order_relaxed) != nullptr) {
        return;
    }
    try {
        auto ring = std::make_unique<FrameRing>(names.size());
        mColumns = names;
        // Now, because the application may change its environment later.
        mFolder = logsFolder(mFolderError);
        mRing.store(ring.release(), std::memory_order_release);
    } catch (const std::bad_alloc&) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "There are no logs of frame times: out of memory");
    }
}

void LogControl::setValues(const double* values, std::size_t count) {
    if (FrameRing* const ring = mRing.load(std::memory_order_relaxed)) {
        ring->addRow(values, count);
    }
}

std::uint32_t LogControl::add(const Ostra::LoggedFrame& frame) {
    FrameRing* const ring = mRing.load(std::memory_order_relaxed);
    if (ring == nullptr) {
        return 0;
    }
    const std::uint32_t number = ring->add(frame);
    if (!std::exchange(mHasFrames, true)) {
        startPlanned();
    }
    return number;
}

void LogControl::startPlanned() {
    try {
        std::string ignored;
        const std::string* const directory = ownRuntimeDirectory(ignored);
        if (directory != nullptr && hasLogPlan(*directory)) {
            const std::lock_guard<std::mutex> lock(mMutex);
            startLocked();
        }
    } catch (const std::bad_alloc&) {
        // A log may still be asked for.
    }
}

void LogControl::setGpu(std::uint32_t frame, std::uint64_t nanoseconds) {
    if (FrameRing* const ring = mRing.load(std::memory_order_relaxed)) {
        ring->setGpu(frame, nanoseconds);
    }
}

void LogControl::request(const LogRequest& request) {
    if (mRing.load(std::memory_order_acquire) == nullptr) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mRequests.push_back(request);
    startLocked();
    mChanged.notify_all();
}

void LogControl::startLocked() {
    if (mIsWorking || mIsExiting) {
        return;
    }
    mIsWorking = startHelperThread("ostra-log", [this] { work(); });
    if (!mIsWorking) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "Frame times are not logged: no thread can be started");
    }
}

/// However the work ends, this ends every wait for it.
void LogControl::work() {
    try {
        workUntilIdle();
        return;
    } catch (const std::exception& error) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "The log of frame times ends: %s", error.what());
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mWriter.reset();
    mIsLogging.store(false, std::memory_order_relaxed);
    mIsWorking = false;
    mChanged.notify_all();
}

void LogControl::workUntilIdle() {
    const FrameRing& ring = *mRing.load(std::memory_order_acquire);
    std::unique_lock<std::mutex> lock(mMutex);
    if (mWriter == nullptr) {
        mWriter = std::make_unique<LogWriter>(ring, mColumns, mFolder, mFolderError);
    }
    for (bool isBusy = true; isBusy;) {
        const std::vector<LogRequest> requests = std::exchange(mRequests, {});
        const bool isExiting = mIsExiting;
        lock.unlock();
        for (const LogRequest& request : requests) {
            mWriter->handle(request);
        }
        isBusy = mWriter->step(isExiting) && !isExiting;
        mIsLogging.store(mWriter->isLogging(), std::memory_order_relaxed);
        lock.lock();
        if (isBusy) {
            mChanged.wait_for(lock, PERIOD, [this] { return !mRequests.empty() || mIsExiting; });
        }
        isBusy = isBusy || !mRequests.empty();
    }
    mIsWorking = false;
    mChanged.notify_all();
}

void LogControl::onExit() {
    std::unique_lock<std::mutex> lock(mMutex);
    mIsExiting = true;
    mChanged.notify_all();
    const bool isDone = mChanged.wait_for(lock, LOG_PATIENCE, [this] { return !mIsWorking; });
    std::string ignored;
    const std::string* const directory = ownRuntimeDirectory(ignored);
    if (isDone && directory != nullptr && runProcess(*directory) == 0) {
        removeLogNotices(*directory, getpid());
    }
}

}  // namespace platform
