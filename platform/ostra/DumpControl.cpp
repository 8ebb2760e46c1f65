#include "ostra/DumpControl.h"

#include <chrono>
#include <cstdlib>
#include <string>

namespace platform {

namespace {

constexpr std::chrono::milliseconds EXIT_PATIENCE{1000};

std::string dumpDirectory() {
    const char* const directory = std::getenv("KORDANIX_DUMP_DIR");  // NOLINT(concurrency-mt-unsafe)
    return directory != nullptr && *directory != '\0' ? directory : ".";
}

}  // namespace

void DumpControl::start(const std::vector<Ostra::DumpWidgetMeta>& metas) {
    const std::lock_guard<std::mutex> order(mOrder);
    finishLocked();
    std::shared_ptr<DumpRun> run = DumpRun::start(metas, dumpDirectory());
    const std::lock_guard<std::mutex> lock(mMutex);
    mRun = std::move(run);
    mIsAdding = mRun != nullptr;
}

void DumpControl::add(const Ostra::FrameDump& dump) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mIsAdding) {
        mRun->add(dump);
    }
}

void DumpControl::finish() {
    const std::lock_guard<std::mutex> order(mOrder);
    finishLocked();
}

std::shared_ptr<DumpRun> DumpControl::stopAdding() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsAdding = false;
    return mRun;
}

void DumpControl::finishLocked() {
    const std::shared_ptr<DumpRun> run = stopAdding();
    if (run == nullptr) {
        return;
    }
    run->finish();
    const std::lock_guard<std::mutex> lock(mMutex);
    mRun.reset();
}

void DumpControl::onExit() {
    // Without mOrder: another thread may hold it and wait for the disk, with the run still here to wait for.
    if (const std::shared_ptr<DumpRun> run = stopAdding()) {
        run->finish(EXIT_PATIENCE);
    }
}

}  // namespace platform
