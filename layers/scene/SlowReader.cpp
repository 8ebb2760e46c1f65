#include "scene/SlowReader.h"

#include <pthread.h>
#include <signal.h>

#include <cmath>
#include <limits>
#include <system_error>

namespace scene {

namespace {

constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

}  // namespace

SlowReader::SlowReader(Read read) : mRead(read), mLatest(NONE) {}

SlowReader::~SlowReader() {
    stop();
}

void SlowReader::start() {
    if (mThread.joinable()) {
        return;
    }
    mIsStopRequested = false;
    mIsRequested = false;
    // A thread inherits its creator's mask: with everything blocked, the application's signals keep
    // going to the application's own threads.
    sigset_t all;
    sigset_t previous;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &previous);
    try {
        mThread = std::thread(&SlowReader::run, this);
    } catch (const std::system_error&) {
        // Left without a thread: latest() stays empty, which the overlay shows as such.
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
}

void SlowReader::stop() {
    if (!mThread.joinable()) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsStopRequested = true;
    }
    mChanged.notify_all();
    mThread.join();
    mLatest.store(NONE, std::memory_order_relaxed);
}

void SlowReader::request() {
    if (!mThread.joinable()) {
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsRequested = true;
    }
    mChanged.notify_all();
}

Reading SlowReader::latest() const {
    const double value = mLatest.load(std::memory_order_relaxed);
    return std::isnan(value) ? Reading() : Reading(value);
}

void SlowReader::settle() {
    if (!mThread.joinable()) {
        return;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait(lock, [this] { return !mIsRequested && !mIsReading; });
}

void SlowReader::run() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (true) {
        mChanged.wait(lock, [this] { return mIsRequested || mIsStopRequested; });
        if (mIsStopRequested) {
            return;
        }
        mIsRequested = false;
        mIsReading = true;
        lock.unlock();
        mLatest.store(mRead().value_or(NONE), std::memory_order_relaxed);
        lock.lock();
        mIsReading = false;
        mChanged.notify_all();
    }
}

}  // namespace scene
