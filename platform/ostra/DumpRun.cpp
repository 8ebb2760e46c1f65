#include "ostra/DumpRun.h"

#include "ostra/HelperThread.h"
#include "ostra/LogTag.h"

#include <android/log.h>

#include <new>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::milliseconds FLUSH_PERIOD{250};

}  // namespace

/// However the writing thread ends, this ends every wait for it.
class DumpRun::Ending {
public:
    explicit Ending(DumpRun& run) : mRun(run) {}
    ~Ending() {
        mRun.mHasEnded.store(true, std::memory_order_relaxed);
        const std::lock_guard<std::mutex> lock(mRun.mMutex);
        mRun.mIsDone = true;
        mRun.mChanged.notify_all();
    }
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;

private:
    DumpRun& mRun;
};

std::shared_ptr<DumpRun> DumpRun::start(const std::vector<Ostra::DumpWidgetMeta>& metas,
                                        const std::vector<const char*>& extraColumns, DumpPlan plan,
                                        const DumpSubjects& subjects) {
    auto run = std::make_shared<DumpRun>(metas, extraColumns, std::move(plan), subjects);
    // The thread holds a reference of its own, so nobody has to wait when its disk hangs.
    return startHelperThread("ostra-dump", [run] { run->write(); }) ? run : nullptr;
}

DumpRun::DumpRun(const std::vector<Ostra::DumpWidgetMeta>& metas,
                 const std::vector<const char*>& extraColumns, DumpPlan plan, const DumpSubjects& subjects)
    : mQueue(metas.size(), extraColumns.size()),
      mPlan(std::move(plan)),
      mFiles(metas, extraColumns, subjects) {
    mNotice.number = mPlan.number;
}

void DumpRun::add(const Ostra::FrameDump& dump, const std::vector<double>& extraValues) {
    if (mHasEnded.load(std::memory_order_relaxed)) {
        return;
    }
    if (!mQueue.push(dump, extraValues)) {
        mDropped.fetch_add(1, std::memory_order_relaxed);
    }
    // The writer looks at every period anyway, so at usual frame rates we never have to wake it.
    if (mQueue.isHalfFull()) {
        mChanged.notify_all();
    }
}

bool DumpRun::finish(std::chrono::milliseconds patience) {
    std::unique_lock<std::mutex> lock(mMutex);
    mIsFinishing = true;
    mChanged.notify_all();
    return mChanged.wait_for(lock, patience, [this] { return mIsDone; });
}

void DumpRun::write() {
    const Ending ending(*this);
    try {
        mNotice.error = writeFiles();
        mHasEnded.store(true, std::memory_order_relaxed);
    } catch (const std::bad_alloc&) {
        mNotice.error = "out of memory";
    }
    const std::string closeError = mFiles.close();
    if (mNotice.error.empty()) {
        mNotice.error = closeError;
    }
    if (!mNotice.error.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "The dump ends: %s", mNotice.error.c_str());
    }
    const std::uint32_t dropped = mDropped;
    if (dropped > 0) {
        __android_log_print(ANDROID_LOG_WARN, TAG,
                            "%u frames are missing from the dump: the disk is too slow",
                            static_cast<unsigned int>(dropped));
    }
    tell(mNotice.error.empty() ? DumpNotice::State::DONE : DumpNotice::State::FAILED);
}

std::string DumpRun::writeFiles() {
    std::string error;
    mNotice.folder = makeDumpFolder(mPlan, error);
    if (error.empty()) {
        error = mFiles.open(mNotice.folder);
    }
    if (!error.empty()) {
        return error;
    }
    __android_log_print(ANDROID_LOG_INFO, TAG, "The dump is written to %s", mNotice.folder.c_str());
    tell(DumpNotice::State::RUNNING);
    return writeUntilFinished();
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
        ++mNotice.frames;
    }
    return mFiles.flush();
}

void DumpRun::tell(DumpNotice::State state) {
    mNotice.state = state;
    writeDumpNotice(mPlan.runtimeDirectory, mNotice);
}

}  // namespace platform
