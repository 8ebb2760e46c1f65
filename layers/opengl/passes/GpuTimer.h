#pragma once

#include "opengl/gl/Functions.h"
#include "scene/FrameTimer.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace opengl {

/// Measures the GPU's time for each frame of a context: from a time stamp right after a swap to one before
/// the overlay draws in the next. If a driver sends work to the GPU as it comes, the time includes the GPU's
/// waiting for the program.
///
/// A software renderer collects a frame, begins to draw it when it is swapped, and takes all time stamps at
/// its end, by the monotonic clock. There the frame's time starts with the swap.
///
/// The rules are those of PassTimer: call everything on the thread that draws with the context. Only
/// onFrameBegin(), onFrameEnd() and release() call OpenGL; they raise no error and never wait. It asks for
/// results once a frame; when LONGEST_DELAY frames are unfinished, the next frames are not measured.
class GpuTimer : public scene::FrameTimer {
public:
    static constexpr std::uint32_t LONGEST_DELAY = 8;  ///< frames; a power of two, so that counts may wrap

    /// The context's functions must outlive the timer.
    explicit GpuTimer(const Functions& gl) : mGl(gl) {}

    /// Call it before each swap, before the overlay does anything in this frame.
    void onFrameEnd();

    /// Call it after each swap. In OpenGL ES it measures nothing while the program itself measures.
    void onFrameBegin(bool isProgramMeasuring);

    /// Deletes its queries in the context.
    void release();

    void beginFrame(std::uint32_t frame, bool isTimed) override;
    bool take(Time& time) override;

private:
    bool prepare();
    void read();
    void deleteQueries();
    GLuint* queriesOf(std::uint32_t frame) { return &mQueries[2 * std::size_t{frame % LONGEST_DELAY}]; }

    const Functions& mGl;
    bool mIsWanted = false;
    bool mIsFailed = false;        ///< the context has no time stamps
    bool mIsOpen = false;          ///< the current frame has its first stamp
    std::uint32_t mNextFrame = 0;  ///< in the scene's numbering
    std::uint64_t mMask = 0;       ///< 0 before the queries are made

    std::array<GLuint, std::size_t{2}* LONGEST_DELAY> mQueries = {};
    std::array<std::uint32_t, LONGEST_DELAY> mNames = {};
    std::array<std::uint64_t, LONGEST_DELAY> mSwaps = {};  ///< of a software renderer's frames, nanoseconds
    std::uint64_t mLastEnd = 0;                            ///< of such a frame
    std::uint32_t mStamped = 0;                            ///< frames that have both stamps
    std::uint32_t mRead = 0;
    std::uint32_t mDistrusted = 0;  ///< how many unfinished frames have unreliable stamps

    bool mHasTime = false;
    Time mTime;
};

}  // namespace opengl
