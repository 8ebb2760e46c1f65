#pragma once

#include "opengl/gl/Functions.h"
#include "scene/RenderPassSource.h"

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace opengl {

/// Measures the render passes of one frame of a context when a capture asks for it: puts GPU time stamps at
/// the beginning of the frame, at every change of the framebuffer that is drawn to, and at the end of the
/// frame, before the overlay draws. Without a capture it costs a comparison a frame.
///
/// What a pass is:
/// - A pass is the time in which one framebuffer stays bound for drawing. Binding it again does not end the
///   pass, and neither does binding another one for reading.
/// - A time below NEGLIGIBLE_NS is no pass: the program drew next to nothing between two bindings (it only
///   prepared a framebuffer, or bound one and then the old one again). If the times before and after went
///   to the same framebuffer, they are one pass.
/// - The time before the first change is no pass: a frame ends with the framebuffer that the next one begins
///   with, and that stays idle until the program is ready to draw. Without any change it is a pass.
/// - Framebuffers after the first MAX_STAMPS - 1 count into the last pass.
/// - What the program draws meanwhile in another context, or without binding (blits between named
///   framebuffers), counts into the pass of that time.
///
/// A pass's values are its GPU time in microseconds and the name of its framebuffer. Times start from 0, the
/// beginning of the frame.
///
/// Call everything on the thread that draws with the context, while it is current. Only isAnyRecording() may
/// be called anywhere, and so may the destructor, whatever became of the context. Only onFrameEnd(),
/// onFrameBegin(), onFramebufferBound() and release() call OpenGL; a capture just asks and gets the answer
/// later. No operation raises an OpenGL error, waits for the GPU, or touches a query of the program's. In
/// OpenGL ES a capture reads the flag of unreliable time stamps (GL_GPU_DISJOINT_EXT) twice, which clears it
/// for the program too.
class PassTimer : public scene::RenderPassSource {
public:
    static constexpr std::size_t MAX_STAMPS = 256;  ///< the last one is the frame's end
    static constexpr std::uint64_t NEGLIGIBLE_NS = 2000;

    /// The context's functions must outlive the timer.
    explicit PassTimer(const Functions& gl);
    ~PassTimer() override;
    PassTimer(const PassTimer&) = delete;
    PassTimer& operator=(const PassTimer&) = delete;

    /// Call it before each swap, before the overlay does anything in this frame. Reads at most one time stamp
    /// a frame.
    void onFrameEnd();

    /// Call it after each swap, with the number of the frame that was swapped.
    void onFrameBegin(std::uint32_t swapped);

    /// Call it after every attempt to bind a framebuffer, while this timer's context is current. Does nothing
    /// unless this very thread is recording.
    void onFramebufferBound();

    /// Whether a timer of the process is recording, so that bindings have to be reported. Relaxed order: a
    /// thread always sees its own changes.
    static bool isAnyRecording() { return gRecording.load(std::memory_order_relaxed) != 0; }

    /// Deletes its queries in the context.
    void release();

    void startCapture() override;
    Progress advanceCapture() override;
    void abandonCapture() override;
    bool readFrame(gui::FrameData& frame, scene::Reading captureStart) override;

private:
    enum class State {
        IDLE,
        ARMED,      ///< it will record the next frame
        RECORDING,  ///< it is recording this frame
        READING,    ///< it is waiting for the time stamps
        READY,      ///< it has all time stamps
        FAILED      ///< there are no time stamps
    };

    struct Stamp {
        GLuint framebuffer;  ///< bound for drawing from this stamp on
        std::uint64_t time;  ///< nanoseconds since the first stamp; 0 until read
    };

    struct Pass {
        GLuint framebuffer;
        std::uint64_t start;
        std::uint64_t end;
    };

    GLuint drawFramebuffer() const;
    bool prepare();
    void stamp(GLuint framebuffer);
    void readStamp();
    std::vector<Pass> findPasses() const;
    void stopRecording();
    void end(State state);
    void deleteQueries();

    static std::atomic<unsigned int> gRecording;

    const Functions& mGl;
    State mState = State::IDLE;
    std::thread::id mThread;
    std::vector<GLuint> mQueries;  ///< a capture's; the first frame after it deletes them
    std::vector<Stamp> mStamps;
    std::size_t mRead = 0;           ///< how many stamps have been read
    std::uint64_t mCounterMask = 0;  ///< time stamps count modulo this + 1
    std::uint64_t mFirst = 0;        ///< the first stamp, as the GPU gave it
    std::uint32_t mFrameNumber = 0;
    bool mIsNumbered = true;  ///< false from the end of the recorded frame until its swap
};

}  // namespace opengl
