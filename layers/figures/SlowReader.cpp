#include "figures/SlowReader.h"

#include "utils/Thread.h"

#include <unistd.h>

#include <cmath>
#include <exception>
#include <limits>

namespace figures {

namespace {

constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
constexpr char THREAD_NAME[] = "kordanix-memory";  // 15 bytes at most

/// A process that is out of memory must not end because of the overlay.
Reading readOrNothing(SlowReader::Read read) {
    try {
        return read();
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace

SlowReader::SlowReader(Read read) : mRead(read), mShared(std::make_unique<Shared>()) {
    mShared->latest = NONE;
}

SlowReader::~SlowReader() {
    stop();
}

void SlowReader::start() {
    if (isRunning()) {
        return;
    }
    mShared->isStopRequested = false;
    mShared->isRequested = false;
    try {
        mShared->thread =
            utils::startThread(THREAD_NAME, [shared = mShared.get(), read = mRead] { run(*shared, read); });
        mProcess = getpid();
    } catch (const std::exception&) {
        // No thread or no memory: latest() stays empty until a later start() succeeds.
    }
}

void SlowReader::stop() {
    if (!isRunning()) {
        return;
    }
    if (getpid() != mProcess) {
        // A forked child. It can neither join a thread that is not there nor destroy what that one waited on,
        // so that stays as it is.
        static_cast<void>(mShared.release());  // NOLINT(bugprone-unused-return-value)
        mShared = std::make_unique<Shared>();
    } else {
        {
            const std::lock_guard<std::mutex> lock(mShared->mutex);
            mShared->isStopRequested = true;
        }
        mShared->changed.notify_all();
        mShared->thread.join();
    }
    mShared->latest.store(NONE, std::memory_order_relaxed);
}

void SlowReader::request() {
    if (!isRunning()) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mShared->mutex);
        mShared->isRequested = true;
    }
    mShared->changed.notify_all();
}

Reading SlowReader::latest() const {
    const double value = mShared->latest.load(std::memory_order_relaxed);
    return std::isnan(value) ? Reading() : Reading(value);
}

void SlowReader::settle() {
    if (!isRunning()) {
        return;
    }
    std::unique_lock<std::mutex> lock(mShared->mutex);
    mShared->changed.wait(lock, [this] { return !mShared->isRequested && !mShared->isReading; });
}

void SlowReader::run(Shared& shared, Read read) {
    std::unique_lock<std::mutex> lock(shared.mutex);
    while (true) {
        shared.changed.wait(lock, [&shared] { return shared.isRequested || shared.isStopRequested; });
        if (shared.isStopRequested) {
            return;
        }
        shared.isRequested = false;
        shared.isReading = true;
        lock.unlock();
        shared.latest.store(readOrNothing(read).value_or(NONE), std::memory_order_relaxed);
        lock.lock();
        shared.isReading = false;
        shared.changed.notify_all();
    }
}

}  // namespace figures
