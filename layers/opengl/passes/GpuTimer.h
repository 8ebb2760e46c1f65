#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "opengl/gl/Functions.h"
#include "scene/FrameTimer.h"

namespace opengl {

/// Measures the GPU's time of each frame of a context: from a time stamp right after a swap to one before the
/// overlay draws in the next. Where a driver hands work to the GPU as it comes, time in which the GPU waits
/// for the program in between counts as well.
///
/// The rules are those of PassTimer: everything on the thread that draws with the context, OpenGL called in
/// onFrameBegin(), onFrameEnd() and release() alone, no error raised, nothing waited for. Results are asked
/// for once a frame; with LONGEST_DELAY frames under way the next ones go without.
class GpuTimer : public scene::FrameTimer {
public:
    static constexpr std::uint32_t LONGEST_DELAY = 8;  ///< frames; a power of two, so that counts may wrap

    /// The functions of the context; they outlive the timer.
    explicit GpuTimer(const Functions& gl) : mGl(gl) {}

    /// Before each swap, before the overlay does anything in this frame.
    void onFrameEnd();

    /// After each swap. In OpenGL ES nothing is measured while the program itself measures.
    void onFrameBegin(bool isProgramMeasuring);

    /// Takes its queries out of the context.
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
    bool mIsFailed = false;  ///< there are no time stamps
    bool mIsOpen = false;    ///< the running frame has its first stamp
    /// A software renderer draws all of a frame tile by tile, and with it the stamps: at the end of the last
    /// tile for either. There the first stamp is sent on alone.
    bool mIsByTile = false;
    std::uint32_t mNextFrame = 0;  ///< as the scene calls it
    std::uint64_t mMask = 0;       ///< 0: no queries have been made

    std::array<GLuint, std::size_t{2}* LONGEST_DELAY> mQueries = {};
    std::array<std::uint32_t, LONGEST_DELAY> mNames = {};
    std::uint32_t mStamped = 0;  ///< frames, with both stamps
    std::uint32_t mRead = 0;
    std::uint32_t mDistrusted = 0;  ///< how many of those under way have stamps that are not to be trusted

    bool mHasTime = false;
    Time mTime;
};

}  // namespace opengl
