#include "opengl/passes/PassTimer.h"

#include "opengl/context/HeadlessContext.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using Api = HeadlessContext::Api;
using opengl::PassTimer;
using Progress = scene::RenderPassSource::Progress;

constexpr int SIZE = 256;

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
    std::vector<GLuint64> times;  ///< what is read, instead of the GPU's
    bool isForbidden = false;     ///< within what a capture asks, which the library's mutex is around
};
Calls calls;

void check() {
    EXPECT_FALSE(calls.isForbidden);
}

void APIENTRY genQueries(GLsizei count, GLuint* names) {
    check();
    calls.queries += count;
    calls.real->genQueries(count, names);
}
void APIENTRY deleteQueries(GLsizei count, const GLuint* names) {
    check();
    calls.queries -= count;
    calls.real->deleteQueries(count, names);
}
void APIENTRY queryCounter(GLuint query, GLenum target) {
    check();
    ++calls.stamps;
    calls.real->queryCounter(query, target);
}
void APIENTRY getQueryObjectuiv(GLuint query, GLenum name, GLuint* value) {
    EXPECT_EQ(name, static_cast<GLenum>(GL_QUERY_RESULT_AVAILABLE)) << "the result's 64 bits count";
    ++calls.questions;
    calls.real->getQueryObjectuiv(query, name, value);
    *value = calls.isAvailable ? *value : 0;
}
void APIENTRY getQueryObjectui64v(GLuint query, GLenum name, GLuint64* value) {
    check();
    calls.real->getQueryObjectui64v(query, name, value);
    if (!calls.times.empty()) {
        *value = calls.times.at(static_cast<std::size_t>(calls.reads));
    }
    ++calls.reads;
}
void APIENTRY getIntegerv(GLenum name, GLint* value) {
    check();
    calls.real->getIntegerv(name, value);
    if (name == opengl::GPU_DISJOINT_EXT && ++calls.disjointReads == calls.disjointRead) {
        *value = GL_TRUE;
    }
}
void APIENTRY noCounter(GLenum /*target*/, GLenum /*name*/, GLint* value) {
    *value = 0;
}

struct Kind {
    const char* name;
    Api api;
    int major;
    int minor;
};

/// A program that draws to framebuffers of its own, in a context of this kind.
class PassTimerTest : public testing::TestWithParam<Kind> {
protected:
    static void SetUpTestSuite() { setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1); }

    void SetUp() override { open(GetParam()); }

    void open(const Kind& kind) {
        HeadlessContext::Options options;
        options.api = kind.api;
        options.major = kind.major;
        options.minor = kind.minor;
        options.width = SIZE;
        options.height = SIZE;
        mContext = HeadlessContext::create(options);
        ASSERT_NE(mContext, nullptr);
        calls = {};
        calls.real = &mContext->functions();
        mFunctions = *calls.real;
        ASSERT_TRUE(mFunctions.features.timerQueries);
        mFunctions.genQueries = genQueries;
        mFunctions.deleteQueries = deleteQueries;
        mFunctions.queryCounter = queryCounter;
        mFunctions.getQueryObjectuiv = getQueryObjectuiv;
        mFunctions.getQueryObjectui64v = getQueryObjectui64v;
        mFunctions.getIntegerv = getIntegerv;
        mTimer = std::make_unique<PassTimer>(mFunctions);
        mClear = reinterpret_cast<PFNGLCLEARPROC>(HeadlessContext::getProcAddress("glClear"));
        mGetError = reinterpret_cast<PFNGLGETERRORPROC>(HeadlessContext::getProcAddress("glGetError"));
        gl().scissor(1, 1, SIZE - 2, SIZE - 2);
        gl().enable(GL_SCISSOR_TEST);
        for (GLuint& framebuffer : mFramebuffers) {
            framebuffer = makeFramebuffer();
        }
    }

    void TearDown() override {
        if (mContext != nullptr) {
            EXPECT_EQ(mGetError(), static_cast<GLenum>(GL_NO_ERROR));
        }
        EXPECT_FALSE(PassTimer::isAnyRecording());
    }

    const opengl::Functions& gl() const { return mContext->functions(); }

    GLuint makeFramebuffer() const {
        GLuint texture = 0;
        GLuint framebuffer = 0;
        gl().genTextures(1, &texture);
        gl().bindTexture(GL_TEXTURE_2D, texture);
        gl().texImage2D(GL_TEXTURE_2D, 0, GL_RGBA, SIZE, SIZE, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        gl().genFramebuffers(1, &framebuffer);
        gl().bindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        gl().framebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        gl().bindFramebuffer(GL_FRAMEBUFFER, 0);
        return framebuffer;
    }

    /// As the shim does it.
    void bind(GLuint framebuffer, GLenum target = GL_FRAMEBUFFER) const {
        gl().bindFramebuffer(target, framebuffer);
        if (PassTimer::isAnyRecording()) {
            mTimer->onFramebufferBound();
        }
    }

    void draw(int times) const {
        for (int i = 0; i < times; ++i) {
            mClear(GL_COLOR_BUFFER_BIT);
        }
    }

    void draw(GLuint framebuffer, int times) const {
        bind(framebuffer);
        draw(times);
    }

    /// What a capture asks, under the library's mutex.
    template <typename Asking>
    auto ask(const Asking& asking) {
        calls.isForbidden = true;
        const auto answer = asking(*mTimer);
        calls.isForbidden = false;
        return answer;
    }

    void start() {
        ask([](PassTimer& timer) { return timer.startCapture(), 0; });
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
        const Progress progress = ask([](PassTimer& timer) { return timer.advanceCapture(); });
        swap();
        return progress;
    }

    /// The frame in which the key is pressed, the one that is measured, and those in which it is read.
    bool capture(const std::function<void()>& drawing, gui::FrameData& data) {
        start();
        Progress progress = frame(drawing);
        for (int i = 0; i < 10000 && progress == Progress::PENDING; ++i) {
            // Frames without drawing in them are over sooner than the renderer's threads get to run.
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            progress = frame();
        }
        return progress == Progress::READY &&
               ask([&data](PassTimer& timer) { return timer.readFrame(data, {}); });
    }

    std::uint32_t mFrames = 0;  ///< swapped
    std::unique_ptr<HeadlessContext> mContext;
    opengl::Functions mFunctions;
    std::unique_ptr<PassTimer> mTimer;
    PFNGLCLEARPROC mClear = nullptr;
    PFNGLGETERRORPROC mGetError = nullptr;
    GLuint mFramebuffers[2] = {};
};

std::vector<unsigned int> framebuffersOf(const gui::FrameData& data) {
    std::vector<unsigned int> framebuffers;
    for (const gui::RenderPassData& pass : data.mRenderPasses) {
        framebuffers.push_back(pass.mValues.at(1));
    }
    return framebuffers;
}

INSTANTIATE_TEST_SUITE_P(Contexts, PassTimerTest,
                         testing::Values(Kind{"OpenGL33", Api::CORE, 3, 3},
                                         Kind{"OpenGLCompatibility", Api::COMPATIBILITY, 2, 1},
                                         Kind{"OpenGLES2", Api::ES, 2, 0}, Kind{"OpenGLES3", Api::ES, 3, 0}),
                         [](const auto& kind) { return std::string(kind.param.name); });

TEST_P(PassTimerTest, EveryFramebufferDrawnToIsAPass) {
    const auto [first, second] = mFramebuffers;
    GLuint ownQuery = 0;
    gl().genQueries(1, &ownQuery);
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        gui::FrameData data(0, {});
        gl().enable(0xFFFF);  // an error of the program's
        const bool isKnown = capture(
            [&, first = first, second = second] {
                gl().beginQuery(GL_TIME_ELAPSED, ownQuery);
                draw(first, 20);
                draw(first, 20);
                draw(second, 30);
                if (gl().features.readFramebuffers) {
                    bind(first, GL_READ_FRAMEBUFFER);
                    draw(10);
                }
                draw(0, 15);
                gl().endQuery(GL_TIME_ELAPSED);
            },
            data);
        EXPECT_EQ(mGetError(), static_cast<GLenum>(GL_INVALID_ENUM));
        EXPECT_EQ(mGetError(), static_cast<GLenum>(GL_NO_ERROR));
        ASSERT_TRUE(isKnown);
        EXPECT_TRUE(data.isValid());
        EXPECT_THAT(framebuffersOf(data), testing::ElementsAre(first, second, 0U));
        long double previousEnd = 0;
        unsigned int index = 0;
        for (const gui::RenderPassData& pass : data.mRenderPasses) {
            EXPECT_EQ(pass.mIndex, index++);
            EXPECT_GE(pass.mStartTime, previousEnd);
            EXPECT_GT(pass.mEndTime, pass.mStartTime);
            EXPECT_NEAR(static_cast<double>((pass.mEndTime - pass.mStartTime) * 1000), pass.mValues[0], 1.0);
            previousEnd = pass.mEndTime;
        }
        EXPECT_EQ(data.mStartTime, 0);
        EXPECT_EQ(data.mEndTime, previousEnd) << "nothing came after the last pass";
        EXPECT_LT(data.mEndTime, 1000);
        EXPECT_EQ(calls.queries, 0) << "freed after reading";
        GLuint64 ownTime = 0;
        gl().getQueryObjectui64v(ownQuery, GL_QUERY_RESULT, &ownTime);
        EXPECT_GT(ownTime, 0U) << "the program's own measurement goes on";
        if (round == 0) {
            EXPECT_EQ(data.mFrameId, 2U) << "the frame after the one with the key";
        }
    }
}

TEST_P(PassTimerTest, TimesThatAreTooShortAreNoPasses) {
    const auto drawing = [&] {
        for (const int i : {0, 1, 0, 1}) {
            bind(mFramebuffers[i]);
        }
    };
    const GLuint64 start = 1000000000;
    calls.times = {start, start + 400000, start + 500000, start + 501500, start + 601500, start + 701500};
    gui::FrameData data(0, {});
    ASSERT_TRUE(capture(drawing, data));
    ASSERT_THAT(framebuffersOf(data), testing::ElementsAre(mFramebuffers[0], mFramebuffers[1]));
    EXPECT_NEAR(static_cast<double>(data.mRenderPasses[0].mStartTime), 0.4, 1e-9);
    EXPECT_EQ(data.mRenderPasses[0].mValues[0], 201U) << "microseconds, with what is too short within";
    EXPECT_EQ(data.mRenderPasses[1].mValues[0], 100U);
    EXPECT_NEAR(static_cast<double>(data.mEndTime), 0.7015, 1e-9);

    calls.times = {start, start + 400000, start + 300000, start + 501500, start + 601500, start + 701500};
    calls.reads = 0;
    EXPECT_FALSE(capture(drawing, data)) << "time does not run backwards";
}

TEST_P(PassTimerTest, ReadsOneTimeStampAFrameAndNoneBeforeItIsThere) {
    calls.isAvailable = false;
    start();
    EXPECT_EQ(calls.queries, static_cast<int>(PassTimer::MAX_STAMPS));
    EXPECT_EQ(frame([&] { draw(mFramebuffers[0], 20); }), Progress::PENDING);
    for (int i = 1; i < 50; ++i) {
        EXPECT_EQ(frame([&] { draw(mFramebuffers[i % 2], 1); }), Progress::PENDING);
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
    int frames = 0;
    for (Progress progress = Progress::PENDING; progress == Progress::PENDING && frames < 10000; ++frames) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const int before = calls.reads;
        progress = frame();
        EXPECT_LE(calls.reads, before + 1);
        EXPECT_EQ(progress == Progress::READY, calls.reads == 3);
    }
    EXPECT_EQ(calls.reads, 3);
    EXPECT_EQ(calls.queries, 0);
}

TEST_P(PassTimerTest, ThreeHundredFramebuffersFillTheLastPass) {
    gui::FrameData data(0, {});
    ASSERT_TRUE(capture(
        [&] {
            for (unsigned int i = 0; i < 300; ++i) {
                draw(mFramebuffers[i % 2], 2);
            }
        },
        data));
    EXPECT_EQ(calls.stamps, static_cast<int>(PassTimer::MAX_STAMPS));
    EXPECT_EQ(data.mRenderPasses.size(), PassTimer::MAX_STAMPS - 2) << "before the first nothing is drawn";
    EXPECT_EQ(data.mRenderPasses.back().mEndTime, data.mEndTime);
}

TEST_P(PassTimerTest, ACaptureCanBeLeftAnywhere) {
    for (int stage = 0; stage < 6; ++stage) {
        SCOPED_TRACE(stage);
        ASSERT_NO_FATAL_FAILURE(open(GetParam()));
        calls.isAvailable = false;
        start();
        if (stage % 3 > 0) {
            draw(mFramebuffers[0], 2);
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
            ask([](PassTimer& timer) { return timer.abandonCapture(), 0; });
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
    gui::FrameData data(0, {});
    const auto drawing = [&] { draw(mFramebuffers[0], 20); };
    mFunctions.getQueryiv = noCounter;
    EXPECT_FALSE(capture(drawing, data)) << "a counter of no bits";
    mFunctions.features.timerQueries = false;
    mFunctions.queryCounter = nullptr;
    mFunctions.getQueryObjectui64v = nullptr;
    EXPECT_FALSE(capture(drawing, data));
    EXPECT_EQ(calls.stamps, 0);
    EXPECT_EQ(calls.queries, 0);
}

TEST_P(PassTimerTest, TimeStampsThatAreNotToBeTrustedAreThrownAway) {
    gui::FrameData data(0, {});
    const auto drawing = [&] { draw(mFramebuffers[0], 20); };
    calls.disjointRead = 2;
    EXPECT_NE(capture(drawing, data), gl().version.isEs) << "disturbed while it was measured";
    calls.disjointRead = 3;
    EXPECT_TRUE(capture(drawing, data)) << "disturbed before";
}

}  // namespace
