#include "opengl/context/HeadlessContext.h"
#include "opengl/passes/GpuTimer.h"
#include "opengl/passes/PassTimer.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Api = HeadlessContext::Api;
using opengl::PassTimer;
using Progress = scene::RenderPassSource::Progress;

/// What the timer asks of OpenGL, counted, and answered otherwise where a test wants that.
struct Calls {
    const opengl::Functions* real = nullptr;
    int stamps = 0;
    int questions = 0;
    int reads = 0;
    int queries = 0;  ///< made and not yet deleted
    bool isAvailable = true;
    int disjointRead = 0;  ///< the flag is set when it is read for the so-manieth time
    int disjointReads = 0;
    std::vector<GLuint64>
        times;                 ///< that are read, in nanoseconds; by default a tenth of a millisecond apart
    bool isForbidden = false;  ///< within what a capture asks, which the library's mutex is around
};
Calls calls;

const opengl::Functions& called() {
    EXPECT_FALSE(calls.isForbidden);
    return *calls.real;
}

void countCalls(opengl::Functions& functions) {
    functions.genQueries = [](GLsizei count, GLuint* names) {
        calls.queries += count;
        called().genQueries(count, names);
    };
    functions.deleteQueries = [](GLsizei count, const GLuint* names) {
        calls.queries -= count;
        called().deleteQueries(count, names);
    };
    functions.queryCounter = [](GLuint query, GLenum target) {
        ++calls.stamps;
        called().queryCounter(query, target);
    };
    functions.getQueryObjectuiv = [](GLuint query, GLenum name, GLuint* value) {
        EXPECT_EQ(name, GLenum{GL_QUERY_RESULT_AVAILABLE}) << "the result's 64 bits count";
        ++calls.questions;
        called().getQueryObjectuiv(query, name, value);
        *value = calls.isAvailable ? *value : 0;
    };
    functions.getQueryObjectui64v = [](GLuint query, GLenum name, GLuint64* value) {
        called().getQueryObjectui64v(query, name, value);
        const auto read = static_cast<std::size_t>(calls.reads++);
        *value = calls.times.empty() ? (std::uint64_t{1} << 40U) + 100000 * read : calls.times.at(read);
    };
    functions.getIntegerv = [](GLenum name, GLint* value) {
        called().getIntegerv(name, value);
        if (name == opengl::GPU_DISJOINT_EXT && ++calls.disjointReads == calls.disjointRead) {
            *value = GL_TRUE;
        }
    };
}

struct Kind {
    const char* name;
    Api api;
    int major, minor;
};

/// A program that draws to framebuffers of its own, in a context of this kind.
class PassTimerTest : public testing::TestWithParam<Kind> {
protected:
    void SetUp() override { open(); }

    void open() {
        HeadlessContext::Options options;
        options.api = GetParam().api;
        options.major = GetParam().major;
        options.minor = GetParam().minor;
        mContext = HeadlessContext::create(options);
        ASSERT_NE(mContext, nullptr);
        calls = {};
        calls.real = &gl();
        mFunctions = gl();
        ASSERT_TRUE(mFunctions.features.timerQueries);
        countCalls(mFunctions);
        mTimer = std::make_unique<PassTimer>(mFunctions);
        gl().genFramebuffers(2, mFramebuffers);
    }

    void TearDown() override {
        EXPECT_TRUE(mContext == nullptr || takeError() == GL_NO_ERROR);
        EXPECT_FALSE(PassTimer::isAnyRecording());
    }

    const opengl::Functions& gl() const { return mContext->functions(); }

    static GLenum takeError() {
        return reinterpret_cast<PFNGLGETERRORPROC>(HeadlessContext::getProcAddress("glGetError"))();
    }

    /// As the shim does it.
    void bind(GLuint framebuffer, GLenum target = GL_FRAMEBUFFER) const {
        gl().bindFramebuffer(target, framebuffer);
        if (PassTimer::isAnyRecording()) {
            mTimer->onFramebufferBound();
        }
    }

    /// What a capture asks, under the library's mutex.
    template <typename Answer, typename... Arguments, typename... Given>
    Answer ask(Answer (PassTimer::*function)(Arguments...), Given&&... given) {
        calls.isForbidden = true;
        struct Allowed {
            ~Allowed() { calls.isForbidden = false; }
        } const allowed;
        return (*mTimer.*function)(std::forward<Given>(given)...);
    }

    void start() {
        ask(&PassTimer::startCapture);
        swap();
    }

    void swap() {
        mContext->swap();
        mTimer->onFrameBegin(++mFrames);
    }

    /// A frame of the program's; what the capture is told in it.
    Progress frame(const std::function<void()>& drawing = [] {}) {
        drawing();
        mTimer->onFrameEnd();
        const Progress progress = ask(&PassTimer::advanceCapture);
        swap();
        return progress;
    }

    /// Frames until a capture has ended. Short ones are over sooner than the renderer's threads get to run.
    Progress wait(Progress progress, int readsOfAFrame = 1) {
        for (int i = 0; i < 10000 && progress == Progress::PENDING; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            const int before = calls.reads;
            progress = frame();
            EXPECT_LE(calls.reads, before + readsOfAFrame);
        }
        return progress;
    }

    /// The frame in which the key is pressed, the one that is measured, and those in which it is read.
    bool capture(const std::function<void()>& drawing) {
        mData = gui::FrameData(0, {});
        calls.reads = 0;
        start();
        return wait(frame(drawing)) == Progress::READY && ask(&PassTimer::readFrame, mData, scene::Reading());
    }

    std::vector<unsigned int> framebuffers() const {
        std::vector<unsigned int> framebuffers;
        for (const gui::RenderPassData& pass : mData.mRenderPasses) {
            framebuffers.push_back(pass.mValues.at(1));
        }
        return framebuffers;
    }

    std::uint32_t mFrames = 0;  ///< swapped
    std::unique_ptr<HeadlessContext> mContext;
    opengl::Functions mFunctions;
    std::unique_ptr<PassTimer> mTimer;
    GLuint mFramebuffers[2] = {};
    gui::FrameData mData{0, {}};  ///< captured
};

INSTANTIATE_TEST_SUITE_P(Contexts, PassTimerTest,
                         testing::Values(Kind{"OpenGL33", Api::CORE, 3, 3},
                                         Kind{"OpenGLCompatibility", Api::COMPATIBILITY, 2, 1},
                                         Kind{"OpenGLES2", Api::ES, 2, 0}, Kind{"OpenGLES3", Api::ES, 3, 0}),
                         [](const auto& kind) { return std::string(kind.param.name); });

TEST_P(PassTimerTest, EveryFramebufferDrawnToIsAPass) {
    GLuint ownQuery = 0;
    gl().genQueries(1, &ownQuery);
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        gl().enable(0xFFFF);  // an error of the program's
        ASSERT_TRUE(capture([&] {
            gl().beginQuery(GL_TIME_ELAPSED, ownQuery);
            bind(mFramebuffers[0]);
            bind(mFramebuffers[0]);
            bind(mFramebuffers[1]);
            if (gl().features.readFramebuffers) {
                bind(mFramebuffers[0], GL_READ_FRAMEBUFFER);
            }
            bind(0);
            gl().endQuery(GL_TIME_ELAPSED);
        }));
        EXPECT_EQ(takeError(), GLenum{GL_INVALID_ENUM});
        EXPECT_EQ(takeError(), GLenum{GL_NO_ERROR});
        EXPECT_TRUE(mData.isValid());
        EXPECT_THAT(framebuffers(), testing::ElementsAre(mFramebuffers[0], mFramebuffers[1], 0U));
        for (unsigned int i = 0; i < mData.mRenderPasses.size(); ++i) {
            const gui::RenderPassData& pass = mData.mRenderPasses[i];
            EXPECT_EQ(pass.mIndex, i);
            EXPECT_NEAR(static_cast<double>(pass.mStartTime), 0.1 * (i + 1), 1e-9);
            EXPECT_NEAR(static_cast<double>(pass.mEndTime), 0.1 * (i + 2), 1e-9);
            EXPECT_EQ(pass.mValues[0], 100U) << "microseconds";
        }
        EXPECT_EQ(mData.mStartTime, 0);
        EXPECT_NEAR(static_cast<double>(mData.mEndTime), 0.4, 1e-9);
        EXPECT_EQ(calls.queries, 0) << "freed after reading";
        EXPECT_TRUE(round > 0 || mData.mFrameId == 2) << "the frame after the one with the key";
    }
}

// A program that sleeps between its frames leaves the GPU idle.
TEST_P(PassTimerTest, ASoftwareRenderersTimeStartsWithTheSwap) {
    opengl::GpuTimer timer(gl());
    scene::FrameTimer::Time time;
    bool isKnown = false;
    for (std::uint32_t name = 1; name < 100 && !isKnown; ++name) {
        timer.beginFrame(name, true);
        timer.onFrameBegin(false);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        timer.onFrameEnd();
        mContext->swap();
        isKnown = timer.take(time);
    }
    ASSERT_TRUE(isKnown);
    EXPECT_LT(time.nanoseconds, 25000000U);
    timer.release();
}

TEST_P(PassTimerTest, AFramesGpuTimeComesWithoutWaitingUnlessTheProgramMeasures) {
    mFunctions.features.softwareRaster = false;
    opengl::GpuTimer timer(mFunctions);
    const auto frame = [&](std::uint32_t name, bool isProgramMeasuring = false) {
        timer.beginFrame(name, true);
        timer.onFrameBegin(isProgramMeasuring);
        timer.onFrameEnd();
        mContext->swap();
    };
    calls.isAvailable = false;
    for (std::uint32_t name = 100; name < 150; ++name) {
        frame(name);
    }
    scene::FrameTimer::Time time;
    EXPECT_FALSE(timer.take(time));
    EXPECT_EQ(calls.stamps, static_cast<int>(2 * opengl::GpuTimer::LONGEST_DELAY));
    EXPECT_EQ(calls.questions, 50);
    calls.isAvailable = true;
    calls.times = {1000, 251000, 9000, 9500};
    mContext->readPixels();  // waits
    frame(150);
    ASSERT_TRUE(timer.take(time));
    EXPECT_EQ(time.frame, 100U) << "the one after the swap in which it was asked for";
    EXPECT_EQ(time.nanoseconds, 250000U);
    EXPECT_FALSE(timer.take(time)) << "one a frame";
    calls.disjointRead = calls.disjointReads + 1;
    frame(151);
    EXPECT_EQ(timer.take(time), !mFunctions.version.isEs) << "clocks that were changed";

    const int before = calls.stamps;
    calls.times.clear();
    frame(152, true);
    EXPECT_EQ(calls.stamps, before + (mFunctions.version.isEs ? 0 : 2));
    timer.beginFrame(0, false);
    timer.onFrameBegin(false);
    timer.onFrameEnd();
    EXPECT_EQ(calls.queries, 0) << "gone when nobody wants them";
}

TEST_P(PassTimerTest, TimesThatAreTooShortAreNoPasses) {
    const auto drawing = [&] {
        for (const int i : {0, 1, 0, 1}) {
            bind(mFramebuffers[i]);
        }
    };
    const GLuint64 start = 1000000000;
    calls.times = {start, start + 400000, start + 500000, start + 501500, start + 601500, start + 701500};
    ASSERT_TRUE(capture(drawing));
    ASSERT_THAT(framebuffers(), testing::ElementsAre(mFramebuffers[0], mFramebuffers[1]));
    EXPECT_NEAR(static_cast<double>(mData.mRenderPasses[0].mStartTime), 0.4, 1e-9);
    EXPECT_EQ(mData.mRenderPasses[0].mValues[0], 201U) << "with what is too short within";
    EXPECT_EQ(mData.mRenderPasses[1].mValues[0], 100U);

    calls.times[2] = start + 300000;
    EXPECT_FALSE(capture(drawing)) << "time does not run backwards";
}

TEST_P(PassTimerTest, ReadsOneTimeStampAFrameAndNoneBeforeItIsThere) {
    calls.isAvailable = false;
    start();
    EXPECT_EQ(calls.queries, static_cast<int>(PassTimer::MAX_STAMPS));
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(frame([&] { bind(mFramebuffers[i % 2]); }), Progress::PENDING);
        EXPECT_EQ(calls.questions, i + 1);
    }
    EXPECT_EQ(calls.reads, 0);
    EXPECT_EQ(calls.stamps, 3) << "those of the one frame";
    calls.isAvailable = true;
    if (gl().features.queryBuffers) {
        // Results would go into the program's buffer.
        GLuint buffer = 0;
        gl().genBuffers(1, &buffer);
        gl().bindBuffer(GL_QUERY_BUFFER, buffer);
        gl().bufferData(GL_QUERY_BUFFER, 64, nullptr, GL_STREAM_READ);
        EXPECT_EQ(frame(), Progress::PENDING);
        EXPECT_EQ(calls.reads, 0);
        gl().bindBuffer(GL_QUERY_BUFFER, 0);
    }
    EXPECT_EQ(wait(Progress::PENDING), Progress::READY);
    EXPECT_EQ(calls.reads, 3);
    EXPECT_EQ(calls.queries, 0);
}

TEST_P(PassTimerTest, ThreeHundredFramebuffersFillTheLastPass) {
    ASSERT_TRUE(capture([&] {
        for (unsigned int i = 0; i < 300; ++i) {
            bind(mFramebuffers[i % 2]);
        }
    }));
    EXPECT_EQ(calls.stamps, static_cast<int>(PassTimer::MAX_STAMPS));
    EXPECT_EQ(mData.mRenderPasses.size(), PassTimer::MAX_STAMPS - 2) << "before the first nothing is drawn";
    EXPECT_EQ(mData.mRenderPasses.back().mEndTime, mData.mEndTime);
}

TEST_P(PassTimerTest, ACaptureCanBeLeftAnywhere) {
    for (int stage = 0; stage < 6; ++stage) {
        SCOPED_TRACE(stage);
        ASSERT_NO_FATAL_FAILURE(open());
        calls.isAvailable = false;
        start();
        if (stage % 3 > 0) {
            bind(mFramebuffers[0]);
            EXPECT_TRUE(PassTimer::isAnyRecording());
        }
        if (stage % 3 > 1) {
            mTimer->onFrameEnd();
        }
        EXPECT_NE(calls.queries, 0);
        if (stage < 3) {
            mContext.reset();
            mTimer.reset();
            EXPECT_NE(calls.queries, 0) << "which went with the context";
        } else {
            ask(&PassTimer::abandonCapture);
            EXPECT_EQ(frame(), Progress::NONE);
            EXPECT_EQ(calls.queries, 0);
            start();
            mTimer->release();
            EXPECT_EQ(calls.queries, 0);
        }
        EXPECT_FALSE(PassTimer::isAnyRecording());
    }
}

TEST_P(PassTimerTest, OnlyTheThreadOfTheContextCounts) {
    start();
    frame([&] {
        const int before = calls.stamps;
        gl().bindFramebuffer(GL_FRAMEBUFFER, mFramebuffers[0]);
        std::thread([&] { mTimer->onFramebufferBound(); }).join();
        EXPECT_EQ(calls.stamps, before);
        mTimer->onFramebufferBound();
        EXPECT_EQ(calls.stamps, before + 1);
    });
}

TEST_P(PassTimerTest, WithoutTimeStampsThereAreNoPasses) {
    mFunctions.getQueryiv = [](GLenum /*target*/, GLenum /*name*/, GLint* value) { *value = 0; };
    EXPECT_FALSE(capture([] {})) << "a counter of no bits";
    mFunctions.features.timerQueries = false;
    mFunctions.queryCounter = nullptr;
    mFunctions.getQueryObjectui64v = nullptr;
    EXPECT_FALSE(capture([] {}));
    EXPECT_EQ(calls.stamps, 0);
    EXPECT_EQ(calls.queries, 0);
}

TEST_P(PassTimerTest, TimeStampsThatAreNotToBeTrustedAreThrownAway) {
    calls.disjointRead = 2;
    EXPECT_NE(capture([] {}), gl().version.isEs) << "disturbed while it was measured";
    calls.disjointRead = 3;
    EXPECT_TRUE(capture([] {})) << "disturbed before";
}

}  // namespace
