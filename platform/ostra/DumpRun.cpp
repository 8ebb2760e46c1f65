#include "ostra/DumpRun.h"

#include "ostra/HelperThread.h"

#include <android/log.h>

#include <utility>

namespace platform {

namespace {

constexpr const char* TAG = "Ostra";
constexpr std::chrono::milliseconds FLUSH_PERIOD{250};

}  // namespace

std::shared_ptr<DumpRun> DumpRun::start(const std::vector<Ostra::DumpWidgetMeta>& metas,
                                        const std::string& directory) {
    auto run = std::make_shared<DumpRun>(metas, directory);
    // The thread owns its share: at exit the process may go on without waiting for a disk that hangs.
    if (!startHelperThread("ostra-dump", [run] { run->write(); })) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "No dump is written: no thread can be started");
        return nullptr;
    }
    return run;
}

DumpRun::DumpRun(const std::vector<Ostra::DumpWidgetMeta>& metas, std::string directory)
    : mQueue(metas.size()), mFiles(metas), mDirectory(std::move(directory)) {}

void DumpRun::add(const Ostra::FrameDump& dump) {
    if (mHasEnded.load(std::memory_order_relaxed)) {
        return;
    }
    if (!mQueue.push(dump)) {
        mDropped.fetch_add(1, std::memory_order_relaxed);
    }
    // The writer looks by itself at every period, so that at usual frame rates nobody has to be woken.
    if (mQueue.isHalfFull()) {
        mChanged.notify_all();
    }
}

void DumpRun::finish(std::optional<std::chrono::milliseconds> patience) {
    std::unique_lock<std::mutex> lock(mMutex);
    mIsFinishing = true;
    mChanged.notify_all();
    const auto isDone = [this] { return mIsDone; };
    if (patience) {
        mChanged.wait_for(lock, *patience, isDone);
    } else {
        mChanged.wait(lock, isDone);
    }
}

void DumpRun::write() {
    std::string error = mFiles.open(mDirectory);
    if (error.empty()) {
        error = writeUntilFinished();
    }
    mHasEnded.store(true, std::memory_order_relaxed);
    const std::string closeError = mFiles.close();
    if (error.empty()) {
        error = closeError;
    }
    if (!error.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "The dump ends: %s", error.c_str());
    }
    const std::uint32_t dropped = mDropped;
    if (dropped > 0) {
        __android_log_print(ANDROID_LOG_WARN, TAG,
                            "%u frames are missing from the dump: the disk is too slow",
                            static_cast<unsigned int>(dropped));
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsDone = true;
    mChanged.notify_all();
}

std::string DumpRun::writeUntilFinished() {
    bool isFinishing = false;
    std::string error;
    while (!isFinishing && error.empty()) {
        {
            std::unique_lock<std::mutex> lock(mMutex);
            mChanged.wait_for(lock, FLUSH_PERIOD, [this] { return mIsFinishing || mQueue.isHalfFull(); });
            isFinishing = mIsFinishing;
        }
        error = writeWaitingFrames();
    }
    return error;
}

std::string DumpRun::writeWaitingFrames() {
    while (mQueue.front() != nullptr) {
        std::string error = mFiles.append(mQueue);
        mQueue.pop();
        if (!error.empty()) {
            return error;
        }
    }
    return mFiles.flush();
}

}  // namespace platform
