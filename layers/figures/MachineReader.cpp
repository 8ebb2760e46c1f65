#include "figures/MachineReader.h"

#include "utils/Thread.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <exception>
#include <limits>
#include <list>
#include <mutex>
#include <string>

namespace figures {

namespace {

using namespace std::chrono_literals;
using sources::Id;
using sources::MachineFigures;

constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
constexpr char THREAD_NAME[] = "kordanix-figure";  // 15 bytes at most
constexpr auto PERIOD = 500ms;
constexpr auto LONGEST_SETTLING = 3s;
/// After so many looks without a new frame the drivers' libraries are given back.
constexpr int LOOKS_BEFORE_REST = 5s / PERIOD;
constexpr double START_PERIOD_US = 1000000.0;

/// Whether a figure that is not there will hardly come.
bool isLasting(Reason reason) {
    return reason != Reason::NONE && reason != Reason::NOT_READ && reason != Reason::ASLEEP &&
           reason != Reason::FIRST_READING && reason != Reason::NOT_ANSWERING;
}

/// How often this process was forked off since the library was loaded; relaxed.
std::atomic<unsigned int> forks{0};

void watchForks() {
    static const int isWatching =
        pthread_atfork(nullptr, nullptr, [] { forks.fetch_add(1, std::memory_order_relaxed); });
    static_cast<void>(isWatching);
}

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

/// What both threads work on; the last of them destroys it.
struct MachineReader::Shared {
    /// Relaxed: each stands alone.
    struct Slot {
        std::atomic<double> value{NONE};  ///< NaN: there is none
        std::atomic<Reason> reason{Reason::NOT_READ};
    };
    std::array<Slot, sources::FIGURES> slots;
    std::atomic<bool> isFanInPercent{false};  ///< relaxed
    std::atomic<std::uint32_t> frames{0};     ///< relaxed; moves while frames are drawn
    std::atomic<const char*> gpuName{""};     ///< release, acquire: what it points to never changes
    std::list<std::string> gpuNames;          ///< the reading thread's; what was once there stays

    std::mutex mutex;  ///< held for a few instructions only, never during a reading
    std::condition_variable changed;
    sources::Wanted wanted;              ///< under the mutex
    bool isRunning = false;              ///< under the mutex
    bool isUrgent = false;               ///< under the mutex: somebody waits for a reading
    std::uint32_t finishedReadings = 0;  ///< under the mutex

    void publish(MachineFigures& figures, const sources::Wanted& read);
    void publishGpu(const sources::FileTree& tree, const MachineFigures& figures);
    void read(const sources::FileTree& tree, MachineFigures& figures, const sources::Wanted& toRead);
    void run();
};

void MachineReader::Shared::publish(MachineFigures& figures, const sources::Wanted& read) {
    for (std::size_t i = 0; i < slots.size(); ++i) {
        const sources::Value& value = figures.value(static_cast<Id>(i));
        const bool isThere = read.test(i) && value && std::isfinite(*value.number);
        slots[i].reason.store(read.test(i) ? value.reason : Reason::NOT_READ, std::memory_order_relaxed);
        slots[i].value.store(isThere ? *value.number : NONE, std::memory_order_relaxed);
        if (read.test(i) && !isThere && isLasting(value.reason)) {
            sources::noteMissing(sources::nameOf(static_cast<Id>(i)), value);
        }
    }
    isFanInPercent.store(std::string(figures.unit(Id::GPU_FAN)) == "percent", std::memory_order_relaxed);
}

void MachineReader::Shared::publishGpu(const sources::FileTree& tree, const MachineFigures& figures) {
    const std::string name =
        figures.gpu().isKnown() && sources::hasSeveralGpus(tree) ? figures.gpu().name() : "";
    if (name != gpuName.load(std::memory_order_relaxed)) {
        gpuName.store(gpuNames.emplace_back(name).c_str(), std::memory_order_release);
    }
}

void MachineReader::Shared::read(const sources::FileTree& tree, MachineFigures& figures,
                                 const sources::Wanted& toRead) {
    const std::string before = figures.gpu().name();
    figures.read(now(), toRead);
    if (figures.gpu().name() != before) {
        publishGpu(tree, figures);
    }
    publish(figures, toRead);
}

void MachineReader::Shared::run() {
    const sources::FileTree tree;
    MachineFigures figures(tree, getpid());
    figures.beSparing();
    std::uint32_t seenFrames = frames.load(std::memory_order_relaxed) - 1;
    int looks = 0;  // since the last new frame
    std::unique_lock<std::mutex> lock(mutex);
    while (wanted.any()) {
        const std::uint32_t drawnFrames = frames.load(std::memory_order_relaxed);
        if (drawnFrames != seenFrames || isUrgent) {
            seenFrames = drawnFrames;
            looks = 0;
            isUrgent = false;
            const sources::Wanted toRead = wanted;
            lock.unlock();
            try {
                read(tree, figures, toRead);
            } catch (const std::exception&) {
                // A process that is out of memory must not end because of the overlay.
            }
            lock.lock();
            ++finishedReadings;
            changed.notify_all();
        } else if (++looks == LOOKS_BEFORE_REST) {
            lock.unlock();
            figures.rest();
            lock.lock();
        }
        changed.wait_for(lock, PERIOD, [&] { return wanted.none() || isUrgent; });
    }
    isRunning = false;
}

MachineReader::MachineReader() : mShared(std::make_shared<Shared>()) {
    watchForks();
    mForks = forks.load(std::memory_order_relaxed);
}

MachineReader::~MachineReader() {
    want({});
}

bool MachineReader::isForked() const {
    return mForks != forks.load(std::memory_order_relaxed);
}

void MachineReader::want(const sources::Wanted& wanted) {
    if (isForked()) {
        // The mutex may be held for ever by a thread that is not here: all of it stays as it is.
        static_cast<void>(new std::shared_ptr<Shared>(std::move(mShared)));
        mShared = std::make_shared<Shared>();
        mForks = forks.load(std::memory_order_relaxed);
    }
    mWanted = wanted;
    {
        const std::lock_guard<std::mutex> lock(mShared->mutex);
        mShared->isUrgent = (wanted & ~mShared->wanted).any();
        mShared->wanted = wanted;
        mIsStartOpen = wanted.any() && !mShared->isRunning;
    }
    mShared->changed.notify_all();
    for (std::size_t i = 0; i < mShared->slots.size(); ++i) {
        if (!wanted.test(i)) {
            mShared->slots[i].value.store(NONE, std::memory_order_relaxed);
        }
    }
    if (mIsStartOpen) {
        start();
    }
}

void MachineReader::start() {
    mSinceStartUs = 0.0;
    mShared->isRunning = true;  // nobody else is there to see it
    try {
        utils::startThread(THREAD_NAME, [shared = mShared] { shared->run(); }).detach();
        mIsStartOpen = false;
    } catch (const std::exception&) {
        // No thread or no memory: the figures stay empty until a later frame succeeds.
        mShared->isRunning = false;
    }
}

void MachineReader::onFrames(double elapsedUs) {
    mShared->frames.fetch_add(1, std::memory_order_relaxed);
    mSinceStartUs += elapsedUs;
    if (isForked()) {
        want(mWanted);
    } else if (mIsStartOpen && mSinceStartUs >= START_PERIOD_US) {
        start();
    }
}

Reading MachineReader::value(sources::Id id) const {
    const Shared::Slot& slot = mShared->slots[static_cast<std::size_t>(id)];
    const double value = slot.value.load(std::memory_order_relaxed);
    return std::isnan(value) ? Reading(slot.reason.load(std::memory_order_relaxed)) : Reading(value);
}

bool MachineReader::isFanInPercent() const {
    return mShared->isFanInPercent.load(std::memory_order_relaxed);
}

const char* MachineReader::gpuName() const {
    return mShared->gpuName.load(std::memory_order_acquire);
}

void MachineReader::settle() {
    std::unique_lock<std::mutex> lock(mShared->mutex);
    if (!mShared->isRunning) {
        return;
    }
    mShared->isUrgent = true;
    mShared->changed.notify_all();
    // One may be under way that began before.
    const std::uint32_t awaited = mShared->finishedReadings + 1;
    mShared->changed.wait_for(lock, LONGEST_SETTLING, [&] {
        return !mShared->isUrgent && mShared->finishedReadings - awaited < 0x80000000U;
    });
}

}  // namespace figures
