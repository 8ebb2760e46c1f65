#include "opengl/entry/Layer.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <thread>

#include "doubles/FakeLog.h"
#include "doubles/FakeProperties.h"
#include "opengl/context/HeadlessContext.h"
#include "ostra/PictureRequest.h"
#include "utils/SystemInfoHelper.h"

namespace {

using Api = HeadlessContext::Api;
using testing::ElementsAre;
using testing::HasSubstr;

std::optional<std::string> pictureRequest;

std::atomic<opengl::FramebufferListener> listener{nullptr};
const opengl::ShimCalls SHIM = {&dlsym, &listener};

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

/// The layer over contexts in memory, its shim being the test.
class LayerTest : public testing::Test {
protected:
    LayerTest() {
        opengl::Layer::setShim(SHIM);
        doubles::setProperty("debug.kordanix.status", "true");
        doubles::setProperty("debug.kordanix.proc", utils::getProcessName());
    }

    /// What a program does with a frame. True when the overlay is in the picture.
    bool swap(const HeadlessContext& context, opengl::LookUp lookUp = nullptr) {
        reinterpret_cast<PFNGLCLEARCOLORPROC>(context.getProcAddress("glClearColor"))(1, 1, 1, 1);
        reinterpret_cast<PFNGLCLEARPROC>(context.getProcAddress("glClear"))(GL_COLOR_BUFFER_BIT);
        const opengl::SwapResult result = mLayer.beforeSwap(
            {opengl::WindowSystem::EGL, context.display(),
             reinterpret_cast<std::uintptr_t>(context.surface()),
             reinterpret_cast<void*>(lookUp != nullptr ? reinterpret_cast<void*>(lookUp)
                                                       : reinterpret_cast<void*>(&eglSwapBuffers)),
             lookUp});
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

    void forget(const HeadlessContext& context) {
        mLayer.forget(opengl::WindowSystem::EGL, context.display(), context.context());
    }

    opengl::Layer mLayer;
    std::function<void()> mWithinSwap;
};

HeadlessContext::Options sized(int width, int height) {
    HeadlessContext::Options options;
    options.major = 3;
    options.width = width;
    options.height = height;
    return options;
}

TEST_F(LayerTest, FollowsTheSurfaceAndTheSettings) {
    const auto context = HeadlessContext::create(sized(740, 360));
    ASSERT_NE(context, nullptr);
    EXPECT_TRUE(swap(*context));
    for (const auto& [width, height, isDrawn] : {std::tuple(1, 1, false), std::tuple(360, 740, true)}) {
        context->resize(width, height);
        EXPECT_EQ(swap(*context), isDrawn) << width;
    }
    doubles::setProperty("debug.kordanix.status", "false");
    doubles::setProperty("debug.kordanix.settingsgeneration", "1");
    EXPECT_TRUE(swapUntil(*context, false));
    doubles::setProperty("debug.kordanix.status", "true");
    doubles::setProperty("debug.kordanix.settingsgeneration", "2");
    EXPECT_TRUE(swapUntil(*context, true));
    EXPECT_THAT(takeLog(), testing::IsEmpty());
}

TEST_F(LayerTest, ASurfaceThatIsNotDrawnOnIsLeftAlone) {
    const auto context = HeadlessContext::create(sized(740, 360));
    const auto other = HeadlessContext::create(sized(740, 360));
    ASSERT_TRUE(context && other);
    const opengl::Swap swap = {opengl::WindowSystem::EGL, context->display(),
                               reinterpret_cast<std::uintptr_t>(context->surface()),
                               reinterpret_cast<void*>(&eglSwapBuffers), nullptr};
    EXPECT_EQ(mLayer.beforeSwap(swap).frame, nullptr);
    eglMakeCurrent(other->display(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    EXPECT_EQ(mLayer.beforeSwap(swap).frame, nullptr);
}

TEST_F(LayerTest, EachThreadHasItsContexts) {
    const auto shared = HeadlessContext::create(sized(320, 200));
    ASSERT_TRUE(shared && swap(*shared));
    std::atomic<int> drawn{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([this, &shared, &drawn, i] {
            HeadlessContext::Options options = sized(740, 360 + i);
            options.shareWith = i > 0 ? shared.get() : nullptr;
            const auto own = HeadlessContext::create(options);
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
    EXPECT_TRUE(swap(*shared));
}

TEST_F(LayerTest, ContextsComeAndGoWithoutATrace) {
    const auto recreate = [this](int count) {
        for (int i = 0; i < count; ++i) {
            const auto context = HeadlessContext::create(sized(740, 360));
            ASSERT_TRUE(context && swap(*context));
            forget(*context);
        }
        malloc_trim(0);
    };
    recreate(10);
    const std::size_t before = mallinfo2().uordblks;
    recreate(40);
    // The overlay of a single context takes more than that.
    EXPECT_LT(mallinfo2().uordblks, before + std::size_t{128} * 1024);
}

TEST_F(LayerTest, ADestroyedContextThatIsStillCurrentIsPassedThrough) {
    auto context = HeadlessContext::create(sized(740, 360));
    ASSERT_TRUE(context && swap(*context));
    mWithinSwap = [&] { forget(*context); };
    EXPECT_TRUE(swap(*context));
    mWithinSwap = nullptr;
    EXPECT_TRUE(swap(*context)) << "a destruction that came to nothing";
    forget(*context);
    eglDestroyContext(context->display(), context->context());
    EXPECT_FALSE(swap(*context));
    EXPECT_FALSE(swap(*context));
    context.reset();
    context = HeadlessContext::create(sized(740, 360));
    EXPECT_TRUE(context && swap(*context));
}

TEST_F(LayerTest, AForkedChildLeavesItsParentsContextsAlone) {
    const opengl::LayerCalls& calls = *kordanixOpenGlLayer(&SHIM);
    const auto context = HeadlessContext::create(sized(740, 360));
    ASSERT_NE(context, nullptr);
    const opengl::Swap swap = {opengl::WindowSystem::EGL, context->display(),
                               reinterpret_cast<std::uintptr_t>(context->surface()),
                               reinterpret_cast<void*>(&eglSwapBuffers), nullptr};
    const opengl::SwapResult first = calls.beforeSwap(swap);
    EXPECT_TRUE(first.hasDrawn);
    listener = [] {};
    const pid_t child = fork();
    if (child == 0) {
        // The frame is the parent's, and so is the context: EGL has nothing current here.
        const bool isReset = listener.load() == nullptr;
        calls.afterSwap(first.frame);
        const bool isLeftAlone = calls.beforeSwap(swap).frame == nullptr;
        calls.contextDestroyed(opengl::WindowSystem::EGL, context->display(), context->context());
        _exit(isReset && isLeftAlone ? 0 : 1);
    }
    calls.afterSwap(first.frame);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    const opengl::SwapResult second = calls.beforeSwap(swap);
    EXPECT_EQ(second.frame, first.frame);
    EXPECT_TRUE(second.hasDrawn);
}

void* lookUpWithoutShaders(const char* name) {
    return std::strcmp(name, "glCreateShader") == 0 ? nullptr : HeadlessContext::getProcAddress(name);
}

TEST_F(LayerTest, AContextThatFailsIsPassedThroughWithOneLine) {
    const auto context = HeadlessContext::create(sized(740, 360));
    ASSERT_NE(context, nullptr);
    for (int frame = 0; frame < 3; ++frame) {
        EXPECT_FALSE(swap(*context, &lookUpWithoutShaders));
    }
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("a context is passed through")));
    const auto other = HeadlessContext::create(sized(740, 360));
    EXPECT_TRUE(other && swap(*other)) << "others are not";
}

TEST_F(LayerTest, APictureIsWrittenOnceWithOrWithoutTheOverlay) {
    const auto context = HeadlessContext::create(sized(40, 30));
    const std::string path = testing::TempDir() + "kordanix-picture-" + std::to_string(getpid());
    for (const char* status : {"true", "false"}) {
        doubles::setProperty("debug.kordanix.status", status);
        doubles::setProperty("debug.kordanix.settingsgeneration", status);
        ASSERT_TRUE(swapUntil(*context, std::strcmp(status, "true") == 0));
        std::ofstream(path).close();
        pictureRequest = path;
        swap(*context);
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        EXPECT_THAT(text.str(), testing::StartsWith("P7\nWIDTH 40\nHEIGHT 30\nDEPTH 4\nMAXVAL 255\n"
                                                    "TUPLTYPE RGB_ALPHA\nENDHDR\n"));
        const std::size_t size = std::size_t{4} * 40 * 30;
        ASSERT_GT(text.str().size(), size);
        const std::string picture = text.str().substr(text.str().size() - size);
        std::vector<std::uint8_t> pixels = context->readPixels();
        for (std::size_t i = 3; i < pixels.size(); i += 4) {
            pixels[i] = 255;
        }
        EXPECT_EQ(std::memcmp(pixels.data(), picture.data(), size), 0);
        EXPECT_NE(access((path + ".part").c_str(), F_OK), 0);
        unlink(path.c_str());
        swap(*context);
        EXPECT_NE(access(path.c_str(), F_OK), 0);
    }
    // What cannot be written is taken away, so that nobody waits for it.
    std::ofstream(path).close();
    mkdir((path + ".part").c_str(), 0700);
    pictureRequest = path;
    swap(*context);
    EXPECT_NE(access(path.c_str(), F_OK), 0);
    rmdir((path + ".part").c_str());
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("no picture could be written")));
}

}  // namespace

namespace platform {

std::optional<std::string> takePictureRequest() {
    return std::exchange(pictureRequest, std::nullopt);
}

}  // namespace platform
