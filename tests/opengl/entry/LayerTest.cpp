#include "opengl/entry/Layer.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <thread>

#include "core/StateInfo.h"
#include "doubles/FakeLog.h"
#include "doubles/FakeProperties.h"
#include "opengl/context/HeadlessContext.h"
#include "opengl/context/VirtualDisplay.h"
#include "ostra/PictureRequest.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "utils/SystemInfoHelper.h"

namespace {

using platform::Claim;
using testing::ElementsAre;
using testing::HasSubstr;

// What the layer asks of the platform, as the tests answer.
std::function<std::optional<std::string>()> takePicture;
std::function<Claim()> claim;
int claims = 0;
std::vector<platform::OverlayNote> notes;
std::int64_t secondsPassed = 0;

std::atomic<opengl::FramebufferListener> listener{nullptr};
std::atomic<unsigned int> surfaceChanges{0};
const opengl::ShimCalls SHIM = {&dlsym, &listener, &surfaceChanges};

// Objects that were made in a context and not deleted.
int objects = 0;
opengl::Functions real;
GLuint APIENTRY createProgram() {
    ++objects;
    return real.createProgram();
}
void APIENTRY deleteProgram(GLuint program) {
    --objects;
    real.deleteProgram(program);
}
void APIENTRY genVertexArrays(GLsizei count, GLuint* names) {
    objects += count;
    real.genVertexArrays(count, names);
}
void APIENTRY deleteVertexArrays(GLsizei count, const GLuint* names) {
    objects -= count;
    real.deleteVertexArrays(count, names);
}

void* lookUpCounting(const char* name) {
    const std::pair<const char*, void*> counted[] = {
        {"glCreateProgram", reinterpret_cast<void*>(&createProgram)},
        {"glDeleteProgram", reinterpret_cast<void*>(&deleteProgram)},
        {"glGenVertexArrays", reinterpret_cast<void*>(&genVertexArrays)},
        {"glDeleteVertexArrays", reinterpret_cast<void*>(&deleteVertexArrays)}};
    for (const auto& [each, function] : counted) {
        if (std::strcmp(each, name) == 0) {
            return function;
        }
    }
    return HeadlessContext::getProcAddress(name);
}

void* lookUpWithoutShaders(const char* name) {
    return std::strcmp(name, "glCreateShader") == 0 ? nullptr : HeadlessContext::getProcAddress(name);
}

/// What the layer has logged; whose GPU this is the library does not know.
std::vector<std::string> takeLog() {
    std::vector<std::string> texts;
    for (const doubles::LogLine& line : doubles::takeLog()) {
        if (line.text.find("checkVendor") == std::string::npos) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

HeadlessContext::Options sized(int width, int height) {
    HeadlessContext::Options options;
    options.major = 3;
    options.width = width;
    options.height = height;
    options.surface = HeadlessContext::Surface::WINDOW;
    return options;
}

/// The layer over windows, its shim being the test.
class LayerTest : public testing::Test {
protected:
    LayerTest() {
        opengl::Layer::setShim(SHIM);
        doubles::setProperty("debug.kordanix.status", "true");
        doubles::setProperty("debug.kordanix.proc", utils::getProcessName());
        takePicture = [] { return std::nullopt; };
        claim = [] { return Claim::NONE; };
        EXPECT_THAT(VirtualDisplay::get().name(), testing::Not(testing::IsEmpty()));
        mContext = HeadlessContext::create(sized(740, 360));
    }

    void SetUp() override { ASSERT_NE(mContext, nullptr); }

    static opengl::Swap swapOf(const HeadlessContext& context, opengl::LookUp lookUp = nullptr) {
        return {
            opengl::WindowSystem::EGL, context.display(), reinterpret_cast<std::uintptr_t>(context.surface()),
            lookUp != nullptr ? reinterpret_cast<void*>(lookUp) : reinterpret_cast<void*>(&eglSwapBuffers),
            lookUp};
    }

    /// What a program does with a frame. True when the overlay is in the picture.
    bool swap(const HeadlessContext& context, opengl::LookUp lookUp = nullptr) {
        context.functions().viewport(0, 0, context.width(), context.height());
        reinterpret_cast<PFNGLCLEARCOLORPROC>(context.getProcAddress("glClearColor"))(1, 1, 1, 1);
        reinterpret_cast<PFNGLCLEARPROC>(context.getProcAddress("glClear"))(GL_COLOR_BUFFER_BIT);
        const opengl::SwapResult result = mLayer.beforeSwap(swapOf(context, lookUp));
        if (mWithinSwap) {
            mWithinSwap();
        }
        if (result.frame != nullptr) {
            mLayer.afterSwap(result.frame);
        }
        const std::vector<std::uint8_t> pixels = context.readPixels();
        const bool isChanged =
            std::any_of(pixels.begin(), pixels.end(), [](auto value) { return value != 255; });
        EXPECT_EQ(isChanged, result.hasDrawn);
        return isChanged;
    }

    /// Frames of a second, none of them with the overlay.
    void expectNotShown(const HeadlessContext& context, const std::string& reason) {
        SCOPED_TRACE(reason);
        secondsPassed += 2;
        for (unsigned int i = 0; i <= opengl::StatusNote::HELD_FRAMES; ++i) {
            EXPECT_FALSE(swap(context));
        }
        ASSERT_FALSE(notes.empty());
        EXPECT_THAT(notes.back().reason, HasSubstr(reason));
        EXPECT_EQ(notes.back().name, utils::getProcessName());
        notes.clear();
    }

    /// Swaps until the overlay is in the picture or not, for a few seconds.
    bool swapUntil(const HeadlessContext& context, bool isShown) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (swap(context) != isShown) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
        }
        return true;
    }

    void publish(const char* name, const char* value) {
        doubles::setProperty(name, value);
        doubles::setProperty("debug.kordanix.settingsgeneration", std::to_string(++mGeneration));
    }

    void forget(const HeadlessContext& context) {
        mLayer.forget(opengl::WindowSystem::EGL, context.display(), context.context());
    }

    std::unique_ptr<HeadlessContext> mContext;
    opengl::Layer mLayer;
    std::function<void()> mWithinSwap;
    int mGeneration = 0;
};

TEST_F(LayerTest, FollowsTheSurfaceAndTheSettingsAndSaysWhyItIsNotThere) {
    EXPECT_TRUE(swap(*mContext));
    EXPECT_TRUE(swap(*mContext));
    ASSERT_EQ(notes.size(), 1U) << "at changes alone";
    EXPECT_TRUE(notes.back().wasShown);
    EXPECT_EQ(notes.back().reason, "");
    mContext->resize(1, 1);
    expectNotShown(*mContext, "only one pixel");
    mContext->resize(360, 740);
    EXPECT_TRUE(swap(*mContext));
    const std::string process = utils::getProcessName();
    const std::tuple<const char*, const char*, const char*, const char*> switches[] = {
        {"debug.kordanix.status", "false", "true", "switched off"},
        {"debug.kordanix.api", "7", "0", "another graphics API"},
        {"debug.kordanix.proc", "other", process.c_str(), "another process is selected"}};
    for (const auto& [name, off, on, reason] : switches) {
        publish(name, off);
        EXPECT_TRUE(swapUntil(*mContext, false));
        expectNotShown(*mContext, reason);
        publish(name, on);
        EXPECT_TRUE(swapUntil(*mContext, true));
    }
    EXPECT_THAT(takeLog(), testing::IsEmpty());
    notes.clear();
    for (int i = 0; i < 100; ++i) {
        mContext->resize(i % 2 == 0 ? 1 : 300, 300);
        swap(*mContext);
    }
    EXPECT_LE(notes.size(), 1U) << "at most one a second";
}

TEST_F(LayerTest, StatesThatKeepItAwayAreTold) {
    const opengl::Functions& gl = mContext->functions();
    EXPECT_TRUE(swap(*mContext));
    GLuint name = 0;
    gl.genQueries(1, &name);
    gl.beginQuery(GL_ANY_SAMPLES_PASSED, name);
    expectNotShown(*mContext, "query");
    gl.endQuery(GL_ANY_SAMPLES_PASSED);
    EXPECT_TRUE(swap(*mContext));
}

TEST_F(LayerTest, SurfacesThatNoSwapShowsOrThatKeepTheirPictureAreLeftAlone) {
    using Surface = HeadlessContext::Surface;
    const std::pair<Surface, const char*> kinds[] = {{Surface::PIXMAP, "pixmap"},
                                                     {Surface::PBUFFER, "pbuffer"},
                                                     {Surface::SINGLE_BUFFERED, "single buffer"},
                                                     {Surface::PRESERVED, "EGL_BUFFER_PRESERVED"}};
    for (const auto& [kind, reason] : kinds) {
        HeadlessContext::Options options = sized(740, 360);
        options.surface = kind;
        const auto context = HeadlessContext::create(options);
        ASSERT_NE(context, nullptr) << reason;
        expectNotShown(*context, reason);
        forget(*context);
    }
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("pixmap"), HasSubstr("pbuffer"), HasSubstr("PRESERVED")))
        << "once for each cause";
    EXPECT_EQ(core::StateInfo::mFrameNumber, 0U);
    HeadlessContext::Options options = sized(740, 360);
    options.surface = Surface::PRESERVED;
    const auto context = HeadlessContext::create(options);
    const auto setBehavior = [&](EGLint behavior) {
        eglSurfaceAttrib(context->display(), context->surface(), EGL_SWAP_BEHAVIOR, behavior);
        ++surfaceChanges;
    };
    setBehavior(EGL_BUFFER_DESTROYED);
    EXPECT_TRUE(swap(*context));
    setBehavior(EGL_BUFFER_PRESERVED);
    EXPECT_FALSE(swap(*context)) << "from the first swap on";
}

TEST_F(LayerTest, TheFirstProcessOfARunThatPresentsAFrameShowsTheOverlay) {
    claim = [] { return Claim::BUSY; };
    mContext->resize(1, 1);
    EXPECT_FALSE(swap(*mContext));
    EXPECT_EQ(claims, 0) << "a window of one pixel is nothing to see";
    mContext->resize(740, 360);
    for (int i = 1; i < 4; ++i) {
        EXPECT_FALSE(swap(*mContext));
        EXPECT_EQ(claims, i);
    }
    EXPECT_EQ(core::StateInfo::mFrameNumber, 0U) << "no frame hook was called";
    claim = [] { return Claim::OWN; };
    EXPECT_TRUE(swap(*mContext));
    EXPECT_TRUE(swap(*mContext));
    EXPECT_EQ(claims, 4);
    EXPECT_EQ(core::StateInfo::mFrameNumber, 2U);

    opengl::Layer later;
    claim = [] { return Claim::FOREIGN; };
    notes.clear();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(later.beforeSwap(swapOf(*mContext)).frame, nullptr);
    }
    EXPECT_EQ(claims, 5);
    EXPECT_EQ(core::StateInfo::mFrameNumber, 2U);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(notes.back().reason, HasSubstr("another process"));
}

TEST_F(LayerTest, AFailureForLackOfMemoryIsTriedAgainAFewTimes) {
    real = mContext->functions();
    const auto swapAgain = [&] { return swap(*mContext, &lookUpCounting); };
    ASSERT_TRUE(swapAgain());
    const int before = objects;
    EXPECT_GE(before, 2);
    int failures = 0;
    takePicture = [&]() -> std::optional<std::string> {
        ++failures;
        throw std::bad_alloc();
    };
    for (const int pause : {0, 1, 2, 4, 8, 1000}) {
        secondsPassed += pause;
        EXPECT_FALSE(swapAgain());
        EXPECT_FALSE(swapAgain());
        EXPECT_EQ(objects, 0) << "nothing is left in the context";
    }
    EXPECT_EQ(failures, 5);
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("for a while"), HasSubstr("a context is passed through: ")));

    forget(*mContext);
    failures = 0;
    EXPECT_FALSE(swapAgain());
    takePicture = [] { return std::nullopt; };
    EXPECT_FALSE(swapAgain());
    secondsPassed += 2;
    EXPECT_TRUE(swapAgain()) << "there is memory again";
    EXPECT_EQ(objects, before);
}

TEST_F(LayerTest, ASurfaceThatIsNotDrawnOnIsLeftAlone) {
    const auto other = HeadlessContext::create(sized(740, 360));
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(mLayer.beforeSwap(swapOf(*mContext)).frame, nullptr);
    eglMakeCurrent(other->display(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    EXPECT_EQ(mLayer.beforeSwap(swapOf(*mContext)).frame, nullptr);
}

TEST_F(LayerTest, EachThreadHasItsContexts) {
    ASSERT_TRUE(swap(*mContext));
    std::atomic<int> drawn{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([this, &drawn, i] {
            const auto own = HeadlessContext::create(sized(740, 360 + i));
            for (int frame = 0; own != nullptr && frame < 20; ++frame) {
                drawn += swap(*own) ? 1 : 0;
            }
            if (own != nullptr) {
                forget(*own);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(drawn, 60);
    EXPECT_TRUE(swap(*mContext));
}

TEST_F(LayerTest, ContextsComeAndGoWithoutATrace) {
    const auto growth = [&](int count, bool hasOverlay) {
        const std::size_t before = mallinfo2().uordblks;
        for (int i = 0; i < count; ++i) {
            const auto context = HeadlessContext::create(sized(740, 360));
            EXPECT_TRUE(context && (!hasOverlay || swap(*context)));
            context->readPixels();
            forget(*context);
        }
        malloc_trim(0);
        return mallinfo2().uordblks - before;
    };
    growth(10, true);
    // Mesa does not free all of a context. The overlay of a single one takes more than the difference.
    const std::size_t bare = growth(40, false);
    EXPECT_LT(growth(40, true), bare + std::size_t{128} * 1024);
}

TEST_F(LayerTest, ADestroyedContextThatIsStillCurrentIsPassedThrough) {
    ASSERT_TRUE(swap(*mContext));
    mWithinSwap = [&] { forget(*mContext); };
    EXPECT_TRUE(swap(*mContext));
    mWithinSwap = nullptr;
    EXPECT_TRUE(swap(*mContext)) << "a destruction that came to nothing";
    forget(*mContext);
    eglDestroyContext(mContext->display(), mContext->context());
    expectNotShown(*mContext, "destroyed");
}

TEST_F(LayerTest, AForkedChildLeavesItsParentsContextsAlone) {
    const opengl::LayerCalls& calls = *kordanixOpenGlLayer(&SHIM);
    const opengl::SwapResult first = calls.beforeSwap(swapOf(*mContext));
    EXPECT_TRUE(first.hasDrawn);
    listener = [] {};
    const pid_t child = fork();
    if (child == 0) {
        // The frame is the parent's, and so is the context: EGL has nothing current here.
        const bool isReset = listener.load() == nullptr;
        calls.afterSwap(first.frame);
        const bool isLeftAlone = calls.beforeSwap(swapOf(*mContext)).frame == nullptr;
        calls.contextDestroyed(opengl::WindowSystem::EGL, mContext->display(), mContext->context());
        _exit(isReset && isLeftAlone ? 0 : 1);
    }
    calls.afterSwap(first.frame);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    const opengl::SwapResult second = calls.beforeSwap(swapOf(*mContext));
    EXPECT_EQ(second.frame, first.frame);
    EXPECT_TRUE(second.hasDrawn);
}

TEST_F(LayerTest, AContextThatCannotBeUsedIsPassedThroughWithOneLine) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(swap(*mContext, &lookUpWithoutShaders));
        secondsPassed += 100;
    }
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("a context is passed through: its context is older")));
    mLayer.onExit();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(notes.back().reason, HasSubstr("its context is older"));
    const auto other = HeadlessContext::create(sized(740, 360));
    EXPECT_TRUE(other && swap(*other)) << "others are not";
}

TEST_F(LayerTest, APictureIsWrittenOnceWithOrWithoutTheOverlay) {
    mContext->resize(40, 30);
    const std::string path = testing::TempDir() + "kordanix-picture-" + std::to_string(getpid());
    const auto request = [&path] {
        std::ofstream(path).close();
        takePicture = [asked = std::optional(path)]() mutable { return std::exchange(asked, std::nullopt); };
    };
    for (const char* status : {"true", "false"}) {
        publish("debug.kordanix.status", status);
        ASSERT_TRUE(swapUntil(*mContext, std::strcmp(status, "true") == 0));
        std::ofstream(path + ".part") << "of another process";
        request();
        swap(*mContext);
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        EXPECT_THAT(text.str(), testing::StartsWith("P7\nWIDTH 40\nHEIGHT 30\nDEPTH 4\nMAXVAL 255\n"
                                                    "TUPLTYPE RGB_ALPHA\nENDHDR\n"));
        const std::size_t size = std::size_t{4} * 40 * 30;
        ASSERT_GT(text.str().size(), size);
        const std::string picture = text.str().substr(text.str().size() - size);
        std::vector<std::uint8_t> pixels = mContext->readPixels();
        for (std::size_t i = 3; i < pixels.size(); i += 4) {
            pixels[i] = 255;
        }
        EXPECT_EQ(std::memcmp(pixels.data(), picture.data(), size), 0);
        EXPECT_NE(access((path + ".part").c_str(), F_OK), 0);
        unlink(path.c_str());
        swap(*mContext);
        EXPECT_NE(access(path.c_str(), F_OK), 0);
    }
    // What cannot be written is taken away, so that nobody waits for it.
    mkdir((path + ".part").c_str(), 0700);
    request();
    swap(*mContext);
    EXPECT_NE(access(path.c_str(), F_OK), 0);
    rmdir((path + ".part").c_str());
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("no picture could be written")));
}

}  // namespace

namespace platform {

std::optional<std::string> takePictureRequest() {
    return takePicture();
}

Claim claimOverlay(const std::string& processName, std::int32_t api) {
    EXPECT_EQ(processName, utils::getProcessName());
    EXPECT_EQ(api, 0);
    ++claims;
    return claim();
}

void writeOverlayNote(const OverlayNote& note) {
    notes.push_back(note);
}

}  // namespace platform

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    time->tv_sec += clock == CLOCK_MONOTONIC_COARSE ? secondsPassed : 0;
    return result;
}
