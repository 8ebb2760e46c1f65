#include "vulkan/timing/PassRecorder.h"

#include "utils/Log.h"
#include "vulkan/timing/Calibration.h"

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

namespace vulkan {

namespace {

constexpr long double NS_PER_MS = 1000000.0L;
constexpr std::uint64_t NS_PER_US = 1000;
constexpr VkPipelineStageFlagBits ALL_DONE = VK_PIPELINE_STAGE_BOTTOM_OF_PIPE_BIT;

}  // namespace

std::atomic<bool> PassRecorder::gIsListening{false};

PassRecorder::Queries::~Queries() {
    for (VkQueryPool pool : mPools) {
        mGpu.vk.DestroyQueryPool(mGpu.device, pool, nullptr);
    }
}

VkQueryPool PassRecorder::Queries::create() {
    mPools.reserve(mPools.size() + 1);
    auto info = infoOf<VkQueryPoolCreateInfo>(VK_STRUCTURE_TYPE_QUERY_POOL_CREATE_INFO);
    info.queryType = VK_QUERY_TYPE_TIMESTAMP;
    info.queryCount = 2 * MAX_PASSES;
    VkQueryPool pool = VK_NULL_HANDLE;
    check(mGpu.vk.CreateQueryPool(mGpu.device, &info, nullptr, &pool), "vkCreateQueryPool");
    mPools.push_back(pool);
    return pool;
}

void PassRecorder::onBegun(VkCommandBuffer commands) {
    const std::lock_guard<std::mutex> lock(mMutex);
    try {
        mRecordings[commands] = {};
    } catch (const std::bad_alloc&) {
        mRecordings.erase(commands);
    }
}

void PassRecorder::beginPass(const Gpu& gpu, VkCommandBuffer commands, PassTargets targets,
                             VkRenderingFlags flags) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mRecordings.find(commands);
    if (!isStamping() || &gpu != mGpu || found == mRecordings.end()) {
        return;
    }
    Recording& recording = found->second;
    recording.isSuspending = (flags & VK_RENDERING_SUSPENDING_BIT) != 0;
    if ((flags & VK_RENDERING_RESUMING_BIT) != 0) {
        return;
    }
    mIsFull = mIsFull || mPasses.size() == MAX_PASSES;
    if (mIsFull) {
        return;
    }
    const auto pass = static_cast<std::uint32_t>(mPasses.size());
    try {
        recording.passes.reserve(recording.passes.size() + 1);
        mPasses.emplace_back().targets = std::move(targets);
    } catch (const std::bad_alloc&) {
        mIsFull = true;
        return;
    }
    recording.passes.push_back(pass);
    recording.open = pass;
    gpu.vk.CmdResetQueryPool(commands, mPool, 2 * pass, 2);
    gpu.vk.CmdWriteTimestamp(commands, ALL_DONE, mPool, 2 * pass);
}

void PassRecorder::endPass(const Gpu& gpu, VkCommandBuffer commands) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mRecordings.find(commands);
    if (&gpu != mGpu || found == mRecordings.end() || found->second.isSuspending) {
        return;
    }
    const std::uint32_t pass = std::exchange(found->second.open, Recording::NONE);
    if (pass != Recording::NONE && isStamping()) {
        gpu.vk.CmdWriteTimestamp(commands, ALL_DONE, mPool, 2 * pass + 1);
        mPasses[pass].isComplete = true;
    }
}

void PassRecorder::onExecuted(VkCommandBuffer commands, std::uint32_t count,
                              const VkCommandBuffer* executed) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mRecordings.find(commands);
    if (found == mRecordings.end()) {
        return;
    }
    Recording& recording = found->second;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto inner = mRecordings.find(executed[i]);
        if (inner == mRecordings.end()) {
            recording.unknown += recording.open == Recording::NONE ? 1 : 0;
            continue;
        }
        try {
            recording.passes.insert(recording.passes.end(), inner->second.passes.begin(),
                                    inner->second.passes.end());
        } catch (const std::bad_alloc&) {
            ++recording.unknown;
        }
    }
}

void PassRecorder::onSubmitted(const Gpu& gpu, VkQueue queue, VkCommandBuffer commands) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const bool isInFrame = mState == State::RECORDING;
    if (&gpu != mGpu || (!isInFrame && mState != State::ENDED && mState != State::READING)) {
        return;
    }
    const auto found = mRecordings.find(commands);
    if (found == mRecordings.end()) {
        mUnknown += isInFrame ? 1 : 0;
        return;
    }
    Recording& recording = found->second;
    if (recording.isSubmitted) {
        for (const std::uint32_t pass : recording.passes) {
            mPasses[pass].isRepeated = true;
        }
    } else if (isInFrame && queue == mQueue) {
        recording.isSubmitted = true;
        mUnknown += recording.unknown;
        for (const std::uint32_t pass : recording.passes) {
            // A secondary command buffer may be in several others.
            mPasses[pass].isRepeated = mPasses[pass].isRepeated || mPasses[pass].isInFrame;
            mPasses[pass].isInFrame = true;
        }
        try {
            mOrder.insert(mOrder.end(), recording.passes.begin(), recording.passes.end());
        } catch (const std::bad_alloc&) {
            ++mUnknown;
        }
    } else if (isInFrame) {
        mElsewhere += static_cast<unsigned int>(recording.passes.size());
    }
}

void PassRecorder::onFrameEnd() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mState == State::RECORDING) {
        enterLocked(State::ENDED);
    }
}

void PassRecorder::onFrameSubmitted(const SubmissionRing& ring) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mState == State::ENDED) {
        mRing = ring.number();
        mSubmission = ring.current();
        enterLocked(State::READING);
    }
}

void PassRecorder::onFrameBegin(Queries& queries, VkQueue queue, const TimeStampClock& clock,
                                std::uint32_t shown) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mState == State::READING && mFrameNumber == 0) {
        mFrameNumber = shown;
    }
    if (mState == State::LISTENING) {
        enterLocked(queue == mQueue && &queries.gpu() == mGpu ? State::RECORDING : State::FAILED);
    } else if (mState == State::ENDED) {
        enterLocked(State::FAILED);
    } else if (mState == State::ARMED) {
        try {
            mPool = clock.mask == 0 ? VK_NULL_HANDLE : queries.create();
            mPasses.reserve(MAX_PASSES);
        } catch (const std::exception&) {
            mPool = VK_NULL_HANDLE;
        }
        mGpu = &queries.gpu();
        mQueue = queue;
        mClock = clock;
        enterLocked(mPool == VK_NULL_HANDLE ? State::FAILED : State::LISTENING);
    }
}

void PassRecorder::advance(SubmissionRing& ring) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mState != State::READING) {
        return;
    }
    if (ring.number() != mRing) {
        enterLocked(State::FAILED);
    } else if (ring.isDone(mSubmission)) {
        readPasses();
        enterLocked(State::READY);
    }
}

void PassRecorder::readPasses() {
    for (const std::uint32_t index : mOrder) {
        Pass& pass = mPasses[index];
        std::array<std::uint64_t, 2> stamps = {};
        pass.isComplete =
            pass.isComplete &&
            mGpu->vk.GetQueryPoolResults(mGpu->device, mPool, 2 * index, 2, sizeof(stamps), stamps.data(),
                                         sizeof(stamps[0]), VK_QUERY_RESULT_64_BIT) == VK_SUCCESS;
        pass.begin = stamps[0];
        pass.end = stamps[1];
        if (pass.isComplete && mKnownTime == 0) {
            mKnownStamp = pass.begin;
            mKnownTime = monotonicTime(*mGpu, mClock, pass.begin).value_or(0);
        }
    }
}

void PassRecorder::forget(const Gpu& gpu) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mGpu == &gpu) {
        enterLocked(State::FAILED);
        mGpu = nullptr;
    }
}

scene::RenderPassSource::Progress PassRecorder::advanceCapture() {
    const std::lock_guard<std::mutex> lock(mMutex);
    switch (mState) {
        case State::READY:
            return Progress::READY;
        case State::IDLE:
        case State::FAILED:
            return Progress::NONE;
        default:
            return Progress::PENDING;
    }
}

bool PassRecorder::readFrame(gui::FrameData& frame, scene::Reading /*captureStart*/) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mState != State::READY) {
        return false;
    }
    tellWhatIsMissing();
    const auto isKnown = [this](std::uint32_t pass) {
        return mPasses[pass].isComplete && !mPasses[pass].isRepeated;
    };
    const auto first = std::find_if(mOrder.begin(), mOrder.end(), isKnown);
    const std::uint64_t start = first == mOrder.end() ? 0 : mPasses[*first].begin;
    frame.mFrameId = mFrameNumber;
    const long double base = mKnownTime == 0
                                 ? 0.0L
                                 : (static_cast<long double>(mKnownTime) +
                                    static_cast<long double>(mClock.nanoseconds(mKnownStamp, start))) /
                                       NS_PER_MS;
    std::uint64_t last = 0;
    unsigned int index = 0;
    for (auto each = first; each != mOrder.end(); ++each) {
        if (!isKnown(*each)) {
            continue;
        }
        const Pass& pass = mPasses[*each];
        const std::uint64_t begin = mClock.nanoseconds(start, pass.begin);
        const std::uint64_t end = std::max(begin, mClock.nanoseconds(start, pass.end));
        gui::RenderPassData data(0.0F, {static_cast<unsigned int>((end - begin) / NS_PER_US),
                                        pass.targets.size.width, pass.targets.size.height});
        for (const VkFormat format : pass.targets.formats) {
            data.addValue(static_cast<unsigned int>(format));
        }
        data.setIndex(index++);
        data.addTimestampInfo(base + static_cast<long double>(begin) / NS_PER_MS,
                              base + static_cast<long double>(end) / NS_PER_MS);
        frame.addRenderPassInfo(data);
        last = std::max(last, end);
    }
    frame.addFrameTimeInfo(base, base + static_cast<long double>(last) / NS_PER_MS);
    enterLocked(State::IDLE);
    return index != 0;
}

void PassRecorder::tellWhatIsMissing() const {
    const auto lost =
        static_cast<unsigned int>(std::count_if(mOrder.begin(), mOrder.end(), [this](std::uint32_t pass) {
            return !mPasses[pass].isComplete || mPasses[pass].isRepeated;
        }));
    if (mUnknown == 0 && mElsewhere == 0 && lost == 0 && !mIsFull) {
        return;
    }
    KORDANIX_LOG_ERROR(
        "not shown in the captured frame: what passes there are in %u command buffers that were recorded "
        "before, %u passes of other queues, %u that ended or were submitted elsewhere or twice%s",
        KORDANIX_LOG_HERE, mUnknown, mElsewhere, lost, mIsFull ? ", and all after the first 256" : "");
}

void PassRecorder::enter(State state) {
    const std::lock_guard<std::mutex> lock(mMutex);
    enterLocked(state);
}

void PassRecorder::enterLocked(State state) {
    mState = state;
    if (state == State::ARMED || state == State::IDLE || state == State::FAILED) {
        mRecordings.clear();
        mPasses.clear();
        mOrder.clear();
        mUnknown = 0;
        mElsewhere = 0;
        mIsFull = false;
        mFrameNumber = 0;
        mKnownTime = 0;
    }
    gIsListening.store(isStamping() || state == State::ENDED || state == State::READING,
                       std::memory_order_relaxed);
}

}  // namespace vulkan
