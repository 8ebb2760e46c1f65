#include "ostra/DumpControl.h"

#include <android/log.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::milliseconds FRAME_PATIENCE{500};
constexpr std::chrono::milliseconds DUMP_PATIENCE{1000};

/// Logs the failure and writes it into the notice. Never throws; without memory it writes no notice.
void tellFailure(const DumpPlan& plan, const char* reason) {
    __android_log_print(ANDROID_LOG_ERROR, "Ostra", "No dump is written: %s", reason);
    try {
        DumpNotice notice;
        notice.number = plan.number;
        notice.state = DumpNotice::State::FAILED;
        notice.error = reason;
        writeDumpNotice(plan.runtimeDirectory, notice);
    } catch (const std::exception&) {
    }
}

}  // namespace

void DumpControl::start(const std::vector<Ostra::DumpWidgetMeta>& metas) {
    finish();
    const std::lock_guard<std::mutex> order(mOrder);
    DumpPlan plan;
    std::vector<const char*> extraColumns;
    DumpSubjects subjects;
    try {
        plan = planDump(++mCount);
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mRuntimeDirectory = plan.runtimeDirectory;
            extraColumns = mExtraColumns;
            subjects = mSubjects;
        }
        if (stopAdding() != nullptr) {
            tellFailure(plan, "the last one still waits for its disk");
            return;
        }
        std::shared_ptr<DumpRun> run = DumpRun::start(metas, extraColumns, plan, subjects);
        if (run == nullptr) {
            tellFailure(plan, "no thread can be started");
            return;
        }
        const std::lock_guard<std::mutex> lock(mMutex);
        mRun = std::move(run);
        mIsAdding = true;
    } catch (const std::bad_alloc&) {
        tellFailure(plan, "out of memory");
    } catch (const std::exception& error) {
        tellFailure(plan, error.what());
    }
}

void DumpControl::add(const Ostra::FrameDump& dump) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mIsAdding) {
        mRun->add(dump, mExtraValues);
    }
}

void DumpControl::setExtraColumns(const std::vector<const char*>& names) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mExtraColumns = names;
    mExtraValues.assign(names.size(), std::numeric_limits<double>::quiet_NaN());
}

void DumpControl::setExtraValues(const double* values, std::size_t count) {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::copy_n(values, std::min(count, mExtraValues.size()), mExtraValues.begin());
}

void DumpControl::setSubject(const std::string& name, const std::string& text) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSubjects[name] = text;
}

void DumpControl::finish() {
    finish(FRAME_PATIENCE);
}

std::shared_ptr<DumpRun> DumpControl::stopAdding() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsAdding = false;
    return mRun;
}

void DumpControl::finish(std::chrono::milliseconds patience) {
    const std::shared_ptr<DumpRun> run = stopAdding();
    if (run == nullptr || !run->finish(patience)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mRun == run) {
        mRun.reset();
    }
}

void DumpControl::onExit() {
    finish(DUMP_PATIENCE);
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mRuntimeDirectory.empty()) {
        removeDumpNotice(mRuntimeDirectory, getpid());
    }
}

}  // namespace platform
