#include "vulkan/entry/Layer.h"

#include "core/StateInfo.h"
#include "entry/LibraryFrame.h"
#include "entry/SurfaceSize.h"
#include "ostra/PictureRequest.h"
#include "utils/Log.h"
#include "vulkan/entry/ProgramRun.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <optional>
#include <utility>

namespace vulkan {

using entry::Obstacle;

VkResult Layer::present(Device& device, VkQueue queue, const VkPresentInfoKHR& info) {
    std::uint32_t index = 0;
    if (!mRight.isRefused()) {
        Obstacle obstacle = nullptr;
        Swapchain* const swapchain = choose(device, info, index, obstacle);
        if (swapchain != nullptr) {
            return presentWith({device, queue, info, *swapchain, index});
        }
        if (obstacle != nullptr) {
            tellOnce(obstacle);
            report(obstacle);
        }
    }
    return device.gpu().vk.QueuePresentKHR(queue, &info);
}

/// The swapchain in the present that has the overlay, or that gets it because none has. Null, and why unless
/// another one has it.
Swapchain* Layer::choose(const Device& device, const VkPresentInfoKHR& info, std::uint32_t& index,
                         Obstacle& obstacle) {
    const Swapchain* const shown = mShown.load(std::memory_order_acquire);
    for (index = 0; index < info.swapchainCount; ++index) {
        Swapchain* const each = device.findSwapchain(info.pSwapchains[index]);
        if (each == nullptr || (shown != nullptr && each != shown)) {
            continue;
        }
        if (each->obstacle != nullptr) {
            obstacle = each->obstacle;
            continue;
        }
        Swapchain* none = nullptr;
        if (each == shown || mShown.compare_exchange_strong(none, each, std::memory_order_acq_rel)) {
            obstacle = nullptr;
            return each;
        }
    }
    return nullptr;
}

VkResult Layer::presentWith(const Present& present) {
    const int callersErrno = errno;
    VkSemaphore drawn = VK_NULL_HANDLE;
    Obstacle obstacle = nullptr;
    try {
        mOverlay.enter();
        obstacle = draw(present, drawn);
        mOverlay.beginSwap();
    } catch (const std::exception& error) {
        fail(present.swapchain, error.what());
        obstacle = present.swapchain.obstacle;
    }
    errno = callersErrno;
    const VkResult result = present.device.gpu().vk.QueuePresentKHR(
        present.queue, drawn == VK_NULL_HANDLE ? &present.info : &mCopy.waitingFor(drawn));
    const int callsErrno = errno;
    try {
        if (std::exchange(mIsInFrame, false)) {
            mOverlay.endSwap();
            std::uint64_t shown = 0;
            {
                const std::lock_guard<std::mutex> lock(mMutex);
                mOverlay.endFrame();
                shown = core::StateInfo::mFrameNumber;
            }
            expectFrame(present, static_cast<std::uint32_t>(shown));
            mOverlay.leave();
        }
    } catch (const std::exception& error) {
        fail(present.swapchain, error.what());
    }
    if (drawn != VK_NULL_HANDLE &&
        (result == VK_ERROR_OUT_OF_HOST_MEMORY || result == VK_ERROR_OUT_OF_DEVICE_MEMORY ||
         result == VK_ERROR_DEVICE_LOST)) {
        // Nobody knows whether the image's semaphore was waited for.
        fail(present.swapchain, "a present failed");
    }
    report(obstacle);
    if (present.swapchain.obstacle != nullptr) {
        forget(present.swapchain);  // not before this frame is over: another one may begin at once
    }
    errno = callsErrno;
    return result;
}

Obstacle Layer::draw(const Present& present, VkSemaphore& drawn) {
    Swapchain& swapchain = present.swapchain;
    if (swapchain.renderer != nullptr) {
        swapchain.renderer->advance();
        takeTimes(present);
    }
    mPasses.onFrameEnd();
    const VkExtent2D size = swapchain.images.upright().size;
    mList.setSize(static_cast<int>(size.width), static_cast<int>(size.height));
    Obstacle obstacle = beginFrame();
    const bool hasOverlay = obstacle == nullptr;
    if (!mIsInFrame || (!hasOverlay && !isPictureWanted())) {
        return obstacle;
    }
    const Obstacle failure = submit(present, hasOverlay, drawn);
    if (failure != nullptr) {
        tellOnce(failure);
    }
    return failure != nullptr ? failure : obstacle;
}

/// The library's part.
Obstacle Layer::beginFrame() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!std::exchange(mHasRun, true)) {
        beginProgramsRun();
    }
    return entry::beginFrame(mOverlay, mRight, nullptr, true, mIsInFrame);
}

/// The GPU's part.
Obstacle Layer::submit(const Present& present, bool hasOverlay, VkSemaphore& drawn) {
    Swapchain& swapchain = present.swapchain;
    const VkPresentInfoKHR& info = present.info;
    const std::uint32_t image = info.pImageIndices[present.index];
    const std::uint32_t family = present.device.familyOf(present.queue);
    if (!present.device.canDraw(family)) {
        return "it presents on a queue that cannot draw";
    }
    if (swapchain.renderer != nullptr && swapchain.family != family) {
        return "its presents change from queue to queue";
    }
    const Obstacle obstacle = mCopy.prepare(info, present.index, swapchain.images);
    if (obstacle != nullptr || image >= swapchain.images.images.size()) {
        return obstacle != nullptr ? obstacle : "it presents an image that its swapchain has not";
    }
    Renderer& renderer = present.device.renderer(swapchain, family, mList);
    Renderer::Frame frame = {present.queue,        image,      info.waitSemaphoreCount,
                             info.pWaitSemaphores, hasOverlay, {}};
    if (isPictureWanted() && !renderer.isReading()) {
        frame.picture = std::exchange(mPicture, {});
        if (renderer.readingObstacle() != nullptr) {
            unlink(std::exchange(frame.picture, {}).c_str());
            KORDANIX_LOG_ERROR("no picture could be written: %s", KORDANIX_LOG_HERE,
                               renderer.readingObstacle());
        }
    }
    if (!hasOverlay && frame.picture.empty()) {
        return nullptr;
    }
    if (hasOverlay && swapchain.images.layers == 0) {
        return "its pictures have no layers";
    }
    Queue* const queue = present.device.findQueue(present.queue);
    FrameStamps* const stamps = queue == nullptr ? nullptr : queue->stamps.get();
    if (stamps != nullptr) {
        frame.stamp = stamps->end();
    }
    const Obstacle failure = renderer.show(mList, frame, drawn);
    if (failure == nullptr) {
        present.device.onSubmitted(renderer);
        mPasses.onFrameSubmitted(renderer.ring());
        if (stamps != nullptr) {
            stamps->onSubmitted(renderer.ring());
        }
    } else if (!frame.picture.empty()) {
        mPicture = std::move(frame.picture);
    }
    return failure;
}

/// What the GPU took of earlier frames.
void Layer::takeTimes(const Present& present) {
    SubmissionRing& ring = present.swapchain.renderer->ring();
    mPasses.advance(ring);
    Queue* const queue = present.device.findQueue(present.queue);
    scene::FrameTimer::Time time;
    if (queue != nullptr && queue->stamps != nullptr && queue->stamps->take(ring, time)) {
        mTimer.give(time);
    }
}

void Layer::expectFrame(const Present& present, std::uint32_t shown) {
    const Queue* const queue = present.device.findQueue(present.queue);
    if (queue == nullptr || !present.device.canDraw(queue->family)) {
        return;  // the overlay is not shown, and such a queue may not even reset what time stamps go into
    }
    mPasses.onFrameBegin(present.device.passQueries(), present.queue, present.device.passClockOf(*queue),
                         shown);
    if (mTimer.isWanted()) {
        present.device.expectFrame(present.queue, mTimer.frame());
    }
}

/// A request stays until its frame could be read, or whoever asked has taken the file away.
bool Layer::isPictureWanted() {
    if (!mPicture.empty()) {
        if (access(mPicture.c_str(), F_OK) != 0) {
            mPicture.clear();
        }
    } else if (std::optional<std::string> path = platform::takePictureRequest()) {
        mPicture = std::move(*path);
    }
    return !mPicture.empty();
}

void Layer::replace(const Swapchain& last, Swapchain& next) {
    const Swapchain* const shown = mShown.load(std::memory_order_acquire);
    if (shown == &last) {
        mShown.store(next.obstacle == nullptr ? &next : nullptr, std::memory_order_release);
    }
}

void Layer::forget(const Swapchain& swapchain) {
    if (mShown.load(std::memory_order_acquire) == &swapchain) {
        mShown.store(nullptr, std::memory_order_release);
    }
}

/// What was submitted is left alone until the swapchain goes.
void Layer::fail(Swapchain& swapchain, const char* reason) {
    try {
        swapchain.obstacle = keep(reason);
        const std::lock_guard<std::mutex> lock(mMutex);
        mTold.push_back(swapchain.obstacle);
    } catch (const std::exception&) {
        swapchain.obstacle = "there is no memory left";
    }
    KORDANIX_LOG_ERROR("a swapchain is passed through: %s", KORDANIX_LOG_HERE, swapchain.obstacle);
}

Obstacle Layer::keep(const std::string& text) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = std::find(mFailures.begin(), mFailures.end(), text);
    return found != mFailures.end() ? found->c_str() : mFailures.emplace_back(text).c_str();
}

/// A swapchain or its presents are left alone: in the log once for each reason.
void Layer::tellOnce(Obstacle obstacle) {
    const std::lock_guard<std::mutex> lock(mMutex);
    try {
        if (std::find(mTold.begin(), mTold.end(), obstacle) == mTold.end()) {
            mTold.push_back(obstacle);
            KORDANIX_LOG_ERROR("a swapchain goes without the overlay: %s", KORDANIX_LOG_HERE, obstacle);
        }
    } catch (const std::bad_alloc&) {
        // Told another time.
    }
}

/// What became of a present, for the note and the log.
void Layer::report(Obstacle obstacle) {
    const std::lock_guard<std::mutex> lock(mMutex);
    try {
        mStatus.onFrame(obstacle, obstacle == nullptr ? mOverlay.mScene.mFrameTimes.lastOverlay() : -1);
        if (mRight.isRefused()) {
            mStatus.finish();
        }
    } catch (const std::exception&) {
        // Out of memory: told after another present.
    }
}

void Layer::onExit() {
    // Another thread may be in the middle of a frame, and this one may have been.
    const std::unique_lock<std::mutex> lock(mMutex, std::try_to_lock);
    if (lock.owns_lock()) {
        try {
            mStatus.finish();
        } catch (const std::exception&) {
            // Out of memory: nobody is told.
        }
    }
}

}  // namespace vulkan
