#include "core/StateInfo.h"
#include "doubles/FakeLog.h"
#include "doubles/FakeProperties.h"
#include "opengl/context/Call.h"
#include "opengl/context/VirtualDisplay.h"
#include "opengl/entry/Layer.h"
#include "ostra/PictureRequest.h"
#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"
#include "utils/SystemInfoHelper.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <thread>

namespace {

using platform::Claim;
using testing::ElementsAre;
using testing::HasSubstr;
using Surface = HeadlessContext::Surface;

// What the layer asks of the platform, as the tests answer.
std::function<std::optional<std::string>()> takePicture;
Claim claim = Claim::NONE;
int claims = 0;
std::vector<platform::OverlayNote> notes;
std::int64_t secondsPassed = 0;

std::atomic<opengl::FramebufferListener> listener{nullptr};
std::atomic<unsigned int> surfaceChanges{0};
std::atomic<bool> isMeasuring{false};
const opengl::ShimCalls SHIM = {&dlsym, &listener, &surfaceChanges, &isMeasuring};

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

/// A context of OpenGL ES 3.
std::unique_ptr<HeadlessContext> makeContext(Surface surface = Surface::WINDOW, int height = 360) {
    HeadlessContext::Options options;
    options.major = 3;
    options.width = 740;
    options.height = height;
    options.surface = surface;
    return HeadlessContext::create(options);
}

/// The layer over windows, its shim being the test.
class LayerTest : public testing::Test {
protected:
    LayerTest() {
        opengl::Layer::setShim(SHIM);
        doubles::setProperty("debug.kordanix.status", "true");
        doubles::setProperty("debug.kordanix.proc", utils::getProcessName());
        takePicture = [] { return std::nullopt; };
        EXPECT_NE(VirtualDisplay::get().name(), "");
        mContext = makeContext();
    }

    void SetUp() override { ASSERT_NE(mContext, nullptr); }

    static opengl::Swap swapOf(const HeadlessContext& context, opengl::LookUp lookUp = nullptr) {
        const auto surface = reinterpret_cast<std::uintptr_t>(context.surface());
        void* const function =
            lookUp != nullptr ? reinterpret_cast<void*>(lookUp) : reinterpret_cast<void*>(&eglSwapBuffers);
        return {opengl::WindowSystem::EGL, context.display(), surface, function, lookUp};
    }

    /// What a program does with a frame. True when the overlay is in the picture.
    bool swap(const HeadlessContext& context, opengl::LookUp lookUp = nullptr) {
        CALL(Viewport)(0, 0, context.width(), context.height());
        CALL(ClearColor)(1, 1, 1, 1);
        CALL(Clear)(GL_COLOR_BUFFER_BIT);
        const opengl::SwapResult result = mLayer.beforeSwap(swapOf(context, lookUp));
        if (mWithinSwap) {
            mWithinSwap();
        }
        if (result.frame != nullptr) {
            mLayer.afterSwap(result.frame);
        }
        const std::vector<std::uint8_t> pixels = context.readPixels();
        const bool isChanged = pixels != std::vector<std::uint8_t>(pixels.size(), 255);
        EXPECT_EQ(isChanged, result.hasDrawn);
        return isChanged;
    }

    /// Frames of a second, none of them with the overlay.
    void expectNotShown(const HeadlessContext& context, const std::string& reason) {
        SCOPED_TRACE(reason);
        secondsPassed += 2;
        for (unsigned int i = 0; i <= entry::StatusNote::HELD_FRAMES; ++i) {
            EXPECT_FALSE(swap(context));
        }
        ASSERT_FALSE(notes.empty());
        EXPECT_THAT(notes.back().reason, HasSubstr(reason));
        EXPECT_EQ(notes.back().name, utils::getProcessName());
        notes.clear();
    }

    /// Until the overlay is in the picture or not.
    void publish(const char* name, const std::string& value, bool isShown) {
        doubles::setProperty(name, value);
        doubles::setProperty("debug.kordanix.settingsgeneration", std::to_string(++mGeneration));
        EXPECT_TRUE(support::waitUntil([&] { return swap(*mContext) == isShown; })) << name;
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
    EXPECT_TRUE(notes.back().wasShown && notes.back().reason.empty());
    mContext->resize(1, 1);
    expectNotShown(*mContext, "only one pixel");
    mContext->resize(360, 740);
    EXPECT_TRUE(swap(*mContext));
    const std::tuple<const char*, const char*, std::string, const char*> switches[] = {
        {"debug.kordanix.status", "false", "true", "switched off"},
        {"debug.kordanix.api", "7", "0", "another graphics API"},
        {"debug.kordanix.proc", "other", utils::getProcessName(), "another process is selected"}};
    for (const auto& [name, off, on, reason] : switches) {
        publish(name, off, false);
        expectNotShown(*mContext, reason);
        publish(name, on, true);
    }
    EXPECT_THAT(takeLog(), testing::IsEmpty());
    notes.clear();
    for (int i = 0; i < 100; ++i) {
        mContext->resize(i % 2 == 0 ? 1 : 300, 300);
        swap(*mContext);
    }
    EXPECT_LE(notes.size(), 1U) << "at most one a second";
}

TEST_F(LayerTest, SurfacesThatNoSwapShowsOrThatKeepTheirPictureAreLeftAlone) {
    const std::pair<Surface, const char*> kinds[] = {{Surface::PIXMAP, "pixmap"},
                                                     {Surface::PBUFFER, "pbuffer"},
                                                     {Surface::SINGLE_BUFFERED, "single buffer"},
                                                     {Surface::PRESERVED, "EGL_BUFFER_PRESERVED"}};
    for (const auto& [kind, reason] : kinds) {
        const auto context = makeContext(kind);
        ASSERT_NE(context, nullptr) << reason;
        expectNotShown(*context, reason);
        forget(*context);
    }
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("pixmap"), HasSubstr("pbuffer"), HasSubstr("PRESERVED")))
        << "once for each cause";
    const auto context = makeContext(Surface::PRESERVED);
    for (const EGLint behavior : {EGL_BUFFER_DESTROYED, EGL_BUFFER_PRESERVED}) {
        eglSurfaceAttrib(context->display(), context->surface(), EGL_SWAP_BEHAVIOR, behavior);
        ++surfaceChanges;
        EXPECT_EQ(swap(*context), behavior == EGL_BUFFER_DESTROYED) << "from the first swap on";
    }
}

TEST_F(LayerTest, TheFirstProcessOfARunThatPresentsAFrameShowsTheOverlay) {
    claim = Claim::BUSY;
    mContext->resize(1, 1);
    EXPECT_FALSE(swap(*mContext));
    EXPECT_EQ(claims, 0) << "a window of one pixel is nothing to see";
    mContext->resize(740, 360);
    EXPECT_FALSE(swap(*mContext) || swap(*mContext));
    EXPECT_EQ(claims, 2);
    EXPECT_EQ(core::StateInfo::mFrameNumber, 0U) << "no frame hook was called";
    claim = Claim::OWN;
    EXPECT_TRUE(swap(*mContext) && swap(*mContext));
    EXPECT_EQ(claims, 3);
    EXPECT_EQ(core::StateInfo::mFrameNumber, 2U);

    opengl::Layer later;
    claim = Claim::FOREIGN;
    notes.clear();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(later.beforeSwap(swapOf(*mContext)).frame, nullptr);
    }
    EXPECT_EQ(claims, 4);
    EXPECT_EQ(core::StateInfo::mFrameNumber, 2U);
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(notes.back().reason, HasSubstr("another process"));
    claim = Claim::OWN;
    secondsPassed += 3;
    const opengl::SwapResult taken = later.beforeSwap(swapOf(*mContext));
    ASSERT_NE(taken.frame, nullptr) << "the other process has ended";
    later.afterSwap(taken.frame);
}

TEST_F(LayerTest, AFailureForLackOfMemoryIsTriedAgainAFewTimes) {
    const auto objects = [] {
        int count = 0;
        for (GLuint name = 1; name < 1000; ++name) {
            count += CALL(IsProgram)(name) + CALL(IsVertexArray)(name);
        }
        return count;
    };
    ASSERT_TRUE(swap(*mContext));
    EXPECT_GE(objects(), 2);
    int failures = 0;
    takePicture = [&]() -> std::optional<std::string> {
        ++failures;
        throw std::bad_alloc();
    };
    for (const int pause : {0, 1, 2, 4, 8, 1000}) {
        secondsPassed += pause;
        EXPECT_FALSE(swap(*mContext) || swap(*mContext));
        EXPECT_EQ(objects(), 0) << "nothing is left in the context";
    }
    EXPECT_EQ(failures, 5);
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("for a while"), HasSubstr("a context is passed through: ")));

    forget(*mContext);
    EXPECT_FALSE(swap(*mContext));
    takePicture = [] { return std::nullopt; };
    EXPECT_FALSE(swap(*mContext));
    secondsPassed += 2;
    EXPECT_TRUE(swap(*mContext)) << "there is memory again";
}

TEST_F(LayerTest, ASurfaceThatIsNotDrawnOnIsLeftAlone) {
    const auto other = makeContext();
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
            const auto own = makeContext(Surface::WINDOW, 360 + i);
            for (int frame = 0; own != nullptr && frame < 20; ++frame) {
                drawn += swap(*own) ? 1 : 0;
            }
            forget(*own);
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
            const auto context = makeContext();
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
    support::ChildProcess child([&] {
        // The frame is the parent's, and so is the context: EGL has nothing current here.
        const bool isReset = listener.load() == nullptr;
        calls.afterSwap(first.frame);
        const bool isLeftAlone = calls.beforeSwap(swapOf(*mContext)).frame == nullptr;
        calls.contextDestroyed(opengl::WindowSystem::EGL, mContext->display(), mContext->context());
        return isReset && isLeftAlone ? 0 : 1;
    });
    calls.afterSwap(first.frame);
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(calls.beforeSwap(swapOf(*mContext)).frame, first.frame);
}

TEST_F(LayerTest, AContextThatCannotBeUsedIsPassedThroughWithOneLine) {
    const opengl::LookUp lookUpWithoutShaders = [](const char* name) {
        return std::strcmp(name, "glCreateShader") == 0 ? nullptr : HeadlessContext::getProcAddress(name);
    };
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(swap(*mContext, lookUpWithoutShaders));
        secondsPassed += 100;
    }
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("a context is passed through: its context is older")));
    mLayer.onExit();
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_THAT(notes.back().reason, HasSubstr("its context is older"));
    const auto other = makeContext();
    EXPECT_TRUE(other && swap(*other)) << "others are not";
}

TEST_F(LayerTest, APictureIsWrittenOnceWithOrWithoutTheOverlay) {
    mContext->resize(40, 30);
    const std::string path = testing::TempDir() + "kordanix-picture-" + std::to_string(getpid());
    const auto swapWithRequest = [&] {
        std::ofstream(path).close();
        takePicture = [asked = std::optional(path)]() mutable { return std::exchange(asked, std::nullopt); };
        swap(*mContext);
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    };
    for (const bool isShown : {true, false}) {
        publish("debug.kordanix.status", isShown ? "true" : "false", isShown);
        std::ofstream(path + ".part") << "of another process";
        const std::string picture = swapWithRequest();
        std::vector<std::uint8_t> pixels = mContext->readPixels();
        for (std::size_t i = 3; i < pixels.size(); i += 4) {
            pixels[i] = 255;
        }
        const std::string head = "P7\nWIDTH 40\nHEIGHT 30\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
        EXPECT_TRUE(picture == head + std::string(pixels.begin(), pixels.end()));
        EXPECT_NE(access((path + ".part").c_str(), F_OK), 0);
        unlink(path.c_str());
        swap(*mContext);
        EXPECT_NE(access(path.c_str(), F_OK), 0);
    }
    // What cannot be written is taken away, so that nobody waits for it.
    mkdir((path + ".part").c_str(), 0700);
    swapWithRequest();
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
    EXPECT_TRUE(processName == utils::getProcessName() && api == 0);
    ++claims;
    return claim;
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
