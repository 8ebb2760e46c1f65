#pragma once

#include "opengl/gl/Functions.h"
#include "scene/RenderPassSource.h"

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

namespace opengl {

/// Measures the render passes of one frame of a context, when a capture asks for it: GPU time stamps are put
/// at the beginning of the frame, at every change of the framebuffer that is drawn to, and at the end of the
/// frame, before the overlay draws. A capture that is not running costs a comparison a frame.
///
/// What a pass is:
/// - the time in which one framebuffer stays bound for drawing. Binding it once more does not end a pass, and
///   neither does binding another one for reading;
/// - a time below NEGLIGIBLE_NS is no pass: nothing, or next to nothing, was drawn between two bindings (a
///   framebuffer that is made ready, or bound and bound back). What lies around it is one pass if it went to
///   the same framebuffer;
/// - neither is the time before the first change: frames end with the framebuffer that the next one begins
///   with, which lies idle until the program is ready to draw. It is a pass if there is no change;
/// - framebuffers after the first MAX_STAMPS - 1 count into the last pass;
/// - what the program draws with another context meanwhile, or without binding (blits between named
///   framebuffers), counts into the pass it falls into.
///
/// A pass's values are its GPU time in microseconds and the name of its framebuffer. Times start from 0, the
/// beginning of the frame.
///
/// Everything happens on the thread that draws with the context, which is current; only isAnyRecording() may
/// be called anywhere, and the destructor, wherever the context went. OpenGL is called in onFrameEnd(),
/// onFrameBegin(), onFramebufferBound() and release() alone; a capture only asks and is answered. No
/// operation raises an OpenGL error, waits for the GPU, or touches a query of the program's; in OpenGL ES the
/// flag of time stamps that are not to be trusted (GL_GPU_DISJOINT_EXT) is read twice a capture, which
/// clears it for the program too.
class PassTimer : public scene::RenderPassSource {
public:
    static constexpr std::size_t MAX_STAMPS = 256;  ///< the last one is the frame's end
    static constexpr std::uint64_t NEGLIGIBLE_NS = 2000;

    /// The functions of the context; they outlive the timer.
    explicit PassTimer(const Functions& gl);
    ~PassTimer() override;
    PassTimer(const PassTimer&) = delete;
    PassTimer& operator=(const PassTimer&) = delete;

    /// Before each swap, before the overlay does anything in this frame. Reads a time stamp a frame at most.
    void onFrameEnd();

    /// After each swap, with the number of the frame that was swapped.
    void onFrameBegin(std::uint32_t swapped);

    /// After a framebuffer was bound, in any manner, with any result. Only when this timer's context is
    /// current; does nothing unless it is recording on this very thread.
    void onFramebufferBound();

    /// Whether some timer of the process records a frame, so that bindings have to be reported. Relaxed
    /// order: a thread always sees its own.
    static bool isAnyRecording() { return gRecording.load(std::memory_order_relaxed) != 0; }

    /// Takes its queries out of the context.
    void release();

    void startCapture() override;
    Progress advanceCapture() override;
    void abandonCapture() override;
    bool readFrame(gui::FrameData& frame, scene::Reading captureStart) override;

private:
    enum class State {
        IDLE,
        ARMED,      ///< the next frame is to be recorded
        RECORDING,  ///< in that frame
        READING,    ///< the time stamps come in
        READY,      ///< all of them are here
        FAILED      ///< there are none
    };

    struct Stamp {
        GLuint framebuffer;  ///< bound for drawing from here on
        std::uint64_t time;  ///< nanoseconds since the first; not before it has been read
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
    std::vector<GLuint> mQueries;  ///< of a capture; deleted in the first frame after it
    std::vector<Stamp> mStamps;
    std::size_t mRead = 0;           ///< stamps whose time is known
    std::uint64_t mCounterMask = 0;  ///< time stamps count modulo this + 1
    std::uint64_t mFirst = 0;        ///< the first stamp as the GPU gave it
    std::uint32_t mFrameNumber = 0;
    bool mIsNumbered = true;  ///< false from the end of the recorded frame until its swap
};

}  // namespace opengl
