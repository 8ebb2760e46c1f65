#pragma once

#include "scene/RenderPassSource.h"
#include "vulkan/draw/SubmissionRing.h"
#include "vulkan/timing/AttachmentRecords.h"
#include "vulkan/timing/TimeStampClock.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace vulkan {

/// Measures the render passes of one frame when a capture asks for it, by GPU time stamps that it records
/// into the application's command buffers, around each pass. Without a capture it costs a comparison a
/// command.
///
/// - It listens from the present after the request, and measures from the next present to that after it, so
///   that command buffers which are recorded ahead are known too.
/// - A command buffer that was recorded before has no stamps: its passes are not shown, and the log says so.
///   So are passes that were submitted twice, or to another queue than that with the overlay, and those after
///   the first MAX_PASSES.
/// - A pass that is suspended and resumed in the same command buffer is one pass.
///
/// A pass's values are its GPU time in microseconds, the width and height of what it draws into, and the
/// formats of its attachments (VkFormat); 0 for a size that is not known. Times are those of CLOCK_MONOTONIC
/// where the device relates its own clock to it; otherwise they start from 0 with the first pass.
///
/// Any thread calls the functions of commands and submissions, and only while isListening(); all others are
/// the rendering thread's. Command buffers may keep the stamps of a capture, so their queries stay as long as
/// the device (see Queries).
class PassRecorder : public scene::RenderPassSource {
public:
    static constexpr std::uint32_t MAX_PASSES = 256;

    /// The queries of captures. Lives as long as the device.
    class Queries {
    public:
        explicit Queries(const Gpu& gpu) : mGpu(gpu) {}
        ~Queries();
        Queries(const Queries&) = delete;
        Queries& operator=(const Queries&) = delete;

        /// New ones. Throws Failure.
        VkQueryPool create();
        const Gpu& gpu() const { return mGpu; }

    private:
        const Gpu& mGpu;
        std::vector<VkQueryPool> mPools;
    };

    /// Whether commands and submissions have to be reported. Relaxed order: a command buffer that is recorded
    /// meanwhile counts as recorded before.
    static bool isListening() { return gIsListening.load(std::memory_order_relaxed); }

    void onBegun(VkCommandBuffer commands);
    void beginPass(const Gpu& gpu, VkCommandBuffer commands, PassTargets targets, VkRenderingFlags flags = 0);
    void endPass(const Gpu& gpu, VkCommandBuffer commands);
    void onExecuted(VkCommandBuffer commands, std::uint32_t count, const VkCommandBuffer* executed);
    void onSubmitted(const Gpu& gpu, VkQueue queue, VkCommandBuffer commands);

    /// Before the overlay's submission in a present.
    void onFrameEnd();

    /// After it, if there was one.
    void onFrameSubmitted(const SubmissionRing& ring);

    /// After a present, with the number of the frame that was shown.
    void onFrameBegin(Queries& queries, VkQueue queue, const TimeStampClock& clock, std::uint32_t shown);

    /// Reads the stamps when they are there. `ring` is that of the next submission.
    void advance(SubmissionRing& ring);

    /// Before a device is destroyed. Any thread.
    void forget(const Gpu& gpu);

    void startCapture() override { enter(State::ARMED); }
    Progress advanceCapture() override;
    void abandonCapture() override { enter(State::FAILED); }
    bool readFrame(gui::FrameData& frame, scene::Reading captureStart) override;

private:
    enum class State {
        IDLE,
        ARMED,      ///< a capture waits for the next frame
        LISTENING,  ///< command buffers get stamps, but this is not the frame
        RECORDING,  ///< this is the frame
        ENDED,      ///< it has been submitted
        READING,    ///< it waits for the GPU
        READY,
        FAILED
    };

    struct Pass {
        PassTargets targets;
        bool isComplete = false;  ///< has both stamps
        bool isInFrame = false;   ///< has been submitted in it
        bool isRepeated = false;  ///< its stamps are of more than one submission
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
    };

    /// What is known of a command buffer since it was begun.
    struct Recording {
        static constexpr std::uint32_t NONE = ~0U;
        std::vector<std::uint32_t> passes;
        std::uint32_t open = NONE;
        bool isSuspending = false;  ///< the open pass does not end with its next end
        unsigned int unknown = 0;   ///< secondary ones of which nothing is known
        bool isSubmitted = false;   ///< in the frame
    };

    void enter(State state);
    void enterLocked(State state);
    bool isStamping() const { return mState == State::LISTENING || mState == State::RECORDING; }
    void readPasses();
    void tellWhatIsMissing() const;

    static std::atomic<bool> gIsListening;

    std::mutex mMutex;
    State mState = State::IDLE;
    const Gpu* mGpu = nullptr;
    VkQueryPool mPool = VK_NULL_HANDLE;
    VkQueue mQueue = VK_NULL_HANDLE;
    TimeStampClock mClock;
    std::unordered_map<VkCommandBuffer, Recording> mRecordings;
    std::vector<Pass> mPasses;
    std::vector<std::uint32_t> mOrder;  ///< of the frame's passes
    unsigned int mUnknown = 0;          ///< command buffers of the frame that were recorded before
    unsigned int mElsewhere = 0;        ///< passes in other queues
    bool mIsFull = false;
    std::uint64_t mRing = 0;
    std::uint64_t mSubmission = 0;
    std::uint32_t mFrameNumber = 0;
    std::uint64_t mKnownStamp = 0;  ///< the GPU took this one
    std::int64_t mKnownTime = 0;    ///< at that time in nanoseconds; 0: not known
};

}  // namespace vulkan
