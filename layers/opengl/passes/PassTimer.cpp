#include "opengl/passes/PassTimer.h"

#include "opengl/passes/TimeStamps.h"

namespace opengl {

namespace {

constexpr long double NS_PER_MS = 1000000.0L;
constexpr std::uint64_t NS_PER_US = 1000;

}  // namespace

std::atomic<unsigned int> PassTimer::gRecording{0};

PassTimer::PassTimer(const Functions& gl) : mGl(gl) {}

PassTimer::~PassTimer() {
    // The context deletes its queries.
    stopRecording();
}

void PassTimer::startCapture() {
    end(mGl.features.timerQueries ? State::ARMED : State::FAILED);
}

void PassTimer::onFrameBegin(std::uint32_t swapped) {
    if (!mIsNumbered) {
        mFrameNumber = swapped;
        mIsNumbered = true;
    }
    if (mState != State::ARMED) {
        return;
    }
    if (!prepare()) {
        mState = State::FAILED;
        return;
    }
    mState = State::RECORDING;
    mThread = std::this_thread::get_id();
    gRecording.fetch_add(1, std::memory_order_relaxed);
    stamp(drawFramebuffer());
}

/// False when the context has no time stamps.
bool PassTimer::prepare() {
    mCounterMask = timeStampMask(mGl);
    if (mCounterMask == 0) {
        return false;
    }
    mStamps.reserve(MAX_STAMPS);
    deleteQueries();
    mQueries.resize(MAX_STAMPS);
    mGl.genQueries(static_cast<GLsizei>(MAX_STAMPS), mQueries.data());
    static_cast<void>(wasDisjoint(mGl));
    return true;
}

void PassTimer::onFramebufferBound() {
    if (mState != State::RECORDING || mThread != std::this_thread::get_id() || mStamps.empty()) {
        return;
    }
    const GLuint framebuffer = drawFramebuffer();
    if (framebuffer != mStamps.back().framebuffer && mStamps.size() < MAX_STAMPS - 1) {
        stamp(framebuffer);
    }
}

void PassTimer::onFrameEnd() {
    if (mState == State::RECORDING) {
        stopRecording();
        const std::size_t count = mStamps.size();
        stamp(0);
        mIsNumbered = false;
        mRead = 0;
        mState = count == 0 || mStamps.size() == count ? State::FAILED : State::READING;
    }
    if (mState == State::READING) {
        readStamp();
    } else if (!mQueries.empty()) {
        deleteQueries();
    }
}

scene::RenderPassSource::Progress PassTimer::advanceCapture() {
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

void PassTimer::abandonCapture() {
    end(State::FAILED);
}

void PassTimer::release() {
    end(State::FAILED);
    deleteQueries();
}

bool PassTimer::readFrame(gui::FrameData& frame, scene::Reading /*captureStart*/) {
    if (mState != State::READY) {
        return false;
    }
    const std::vector<Pass> passes = findPasses();
    frame.mFrameId = mFrameNumber;
    frame.addFrameTimeInfo(0.0L, static_cast<long double>(mStamps.back().time) / NS_PER_MS);
    unsigned int index = 0;
    for (const Pass& pass : passes) {
        const auto microseconds = static_cast<unsigned int>((pass.end - pass.start) / NS_PER_US);
        gui::RenderPassData data(0.0F, {microseconds, pass.framebuffer});
        data.setIndex(index++);
        data.addTimestampInfo(static_cast<long double>(pass.start) / NS_PER_MS,
                              static_cast<long double>(pass.end) / NS_PER_MS);
        frame.addRenderPassInfo(data);
    }
    end(State::IDLE);
    return !passes.empty();
}

std::vector<PassTimer::Pass> PassTimer::findPasses() const {
    std::vector<Pass> passes;
    const std::size_t intervals = mStamps.size() - 1;
    for (std::size_t i = intervals > 1 ? 1 : 0; i < intervals; ++i) {
        const Pass pass = {mStamps[i].framebuffer, mStamps[i].time, mStamps[i + 1].time};
        if (pass.end < pass.start) {
            return {};  // the GPU's clock was disturbed
        }
        if (pass.end - pass.start < NEGLIGIBLE_NS) {
            continue;
        }
        if (!passes.empty() && passes.back().framebuffer == pass.framebuffer) {
            passes.back().end = pass.end;
        } else {
            passes.push_back(pass);
        }
    }
    return passes;
}

GLuint PassTimer::drawFramebuffer() const {
    GLint framebuffer = 0;
    if (mGl.features.framebuffers) {
        // Equal to GL_FRAMEBUFFER_BINDING where one binding serves drawing and reading.
        mGl.getIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    }
    return static_cast<GLuint>(framebuffer);
}

void PassTimer::stamp(GLuint framebuffer) {
    if (canPutTimeStamp(mGl)) {
        mGl.queryCounter(mQueries[mStamps.size()], GL_TIMESTAMP);
        mStamps.push_back({framebuffer, 0});
    }
}

void PassTimer::readStamp() {
    if (!canReadTimeStamp(mGl)) {
        return;  // try again in a later frame
    }
    const GLuint query = mQueries[mRead];
    GLuint isAvailable = GL_FALSE;
    mGl.getQueryObjectuiv(query, GL_QUERY_RESULT_AVAILABLE, &isAvailable);
    if (isAvailable == GL_FALSE) {
        return;
    }
    GLuint64 time = 0;
    mGl.getQueryObjectui64v(query, GL_QUERY_RESULT, &time);
    if (mRead == 0) {
        mFirst = time;
    }
    mStamps[mRead].time = (time - mFirst) & mCounterMask;
    ++mRead;
    if (mRead == mStamps.size()) {
        mState = wasDisjoint(mGl) ? State::FAILED : State::READY;
        deleteQueries();
    }
}

void PassTimer::stopRecording() {
    if (mState == State::RECORDING) {
        gRecording.fetch_sub(1, std::memory_order_relaxed);
    }
}

void PassTimer::end(State state) {
    stopRecording();
    mStamps.clear();
    mIsNumbered = true;
    mState = state;
}

void PassTimer::deleteQueries() {
    mGl.deleteQueries(static_cast<GLsizei>(mQueries.size()), mQueries.data());
    mQueries.clear();
}

}  // namespace opengl
