// What programs on Android do, one of them a word: parts, toolkit, threads, late, state, es1. Each draws
// white frames and prints how the overlay got on with it; nothing that the program draws itself is anything
// but white.

#include "opengl/context/Call.h"
#include "opengl/state/RandomState.h"
#include "opengl/state/StateDump.h"

#include <EGL/eglext.h>
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

namespace {

constexpr int MOST_FRAMES = 1000;

template <typename Function>
Function find(const char* name) {
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

std::unique_ptr<HeadlessContext> makeContext(const HeadlessContext* shareWith = nullptr) {
    HeadlessContext::Options options;
    options.shareWith = shareWith;
    options.width = 740;
    options.height = 360;
    options.surface = HeadlessContext::Surface::WINDOW;
    return HeadlessContext::create(options);
}

void clear() {
    CALL(ClearColor)(1, 1, 1, 1);
    CALL(Clear)(GL_COLOR_BUFFER_BIT);
}

/// In the surface's buffer, which keeps its picture when it is swapped.
std::ptrdiff_t changedPixels(const HeadlessContext& context) {
    const std::vector<std::uint8_t> pixels = context.readPixels();
    return std::count_if(pixels.begin(), pixels.end(), [](std::uint8_t value) { return value != 255; });
}

/// Whole frames until the overlay is in one of them, by this swap.
bool isShown(const HeadlessContext& context, const std::function<void()>& swap) {
    for (int frame = 0; frame < MOST_FRAMES; ++frame) {
        clear();
        swap();
        if (changedPixels(context) > 0) {
            return true;
        }
        usleep(1000);
    }
    return false;
}

/// A frame of a program that redraws a corner alone when its buffer has the rest. Returns the buffer's age.
int drawPart(const HeadlessContext& context) {
    int age = -1;
    int corner[4] = {0, 0, 8, 8};
    eglQuerySurface(context.display(), context.surface(), EGL_BUFFER_AGE_KHR, &age);
    if (age > 0) {
        static const auto setRegion = find<PFNEGLSETDAMAGEREGIONKHRPROC>("eglSetDamageRegionKHR");
        if (setRegion(context.display(), context.surface(), corner, 1) == EGL_FALSE) {
            std::printf("no damage region\n");
        }
        CALL(Enable)(GL_SCISSOR_TEST);
        CALL(Scissor)(corner[0], corner[1], corner[2], corner[3]);
    }
    clear();
    CALL(Disable)(GL_SCISSOR_TEST);
    static const auto swap = find<PFNEGLSWAPBUFFERSWITHDAMAGEKHRPROC>("eglSwapBuffersWithDamageKHR");
    swap(context.display(), context.surface(), corner, 1);
    return age;
}

/// Redraws parts while the overlay is there, until it is switched off, and then some more.
int drawParts(const char* switchOff) {
    const auto context = makeContext();
    if (!isShown(*context, [&] { context->swap(); })) {
        return 1;
    }
    int whole = 0;
    for (int frame = 0; frame < 10; ++frame) {
        whole += drawPart(*context) == 0 ? 1 : 0;
    }
    // A program may set the region for a buffer of whatever age.
    int corner[4] = {0, 0, 8, 8};
    int age = 0;
    eglQuerySurface(context->display(), context->surface(), EGL_BUFFER_AGE_KHR, &age);
    find<PFNEGLSETDAMAGEREGIONKHRPROC>("eglSetDamageRegionKHR")(context->display(), context->surface(),
                                                                corner, 1);
    std::printf("%d of 10 frames drawn whole, overlay %s\n", whole,
                changedPixels(*context) > 0 ? "shown" : "gone");
    if (std::system(switchOff) != 0) {
        return 2;
    }
    int parts = 0;
    for (int frame = 0; frame < MOST_FRAMES && parts < 20; ++frame) {
        parts += drawPart(*context) > 0 ? 1 : 0;
        usleep(1000);
    }
    std::printf("%d frames in part, then %td values changed\n", parts, changedPixels(*context));
    return 0;
}

int drawAsToolkit() {
    pthread_setname_np(pthread_self(), "RenderThread");
    const auto context = makeContext();
    int whole = 0;
    for (int frame = 0; frame < 60; ++frame) {
        whole += drawPart(*context) == 0 ? 1 : 0;
    }
    std::printf("%d of 60 frames drawn whole, overlay %s\n", whole,
                changedPixels(*context) > 0 ? "shown" : "gone");
    return 0;
}

/// Another context for the same window, current.
EGLContext makeAnother(const HeadlessContext& window, EGLint version) {
    EGLint id = 0;
    eglQueryContext(window.display(), window.context(), EGL_CONFIG_ID, &id);
    const EGLint wanted[] = {EGL_CONFIG_ID, id, EGL_NONE};
    const EGLint attributes[] = {EGL_CONTEXT_CLIENT_VERSION, version, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    eglChooseConfig(window.display(), wanted, &config, 1, &count);
    const EGLContext context = eglCreateContext(window.display(), config, EGL_NO_CONTEXT, attributes);
    eglMakeCurrent(window.display(), window.surface(), window.surface(), context);
    return context;
}

/// Contexts that another thread destroys while they are current; a new one may have the handle of the last.
int destroyElsewhere() {
    const auto window = makeContext();
    for (int round = 0; round < 5; ++round) {
        const EGLContext context = makeAnother(*window, 2);
        const bool wasShown = isShown(*window, [&] { window->swap(); });
        std::thread([&] { eglDestroyContext(window->display(), context); }).join();
        clear();
        window->swap();
        std::printf("%s, %s\n", wasShown ? "shown" : "not shown",
                    CALL(GetError)() == GL_NO_ERROR ? "no error" : "an error");
        eglMakeCurrent(window->display(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    return 0;
}

int swapByLateName() {
    const auto context = makeContext();
    const auto swap = find<PFNEGLSWAPBUFFERSWITHDAMAGEEXTPROC>("eglSwapBuffersWithDamageEXT");
    const bool wasShown =
        isShown(*context, [&] { swap(context->display(), context->surface(), nullptr, 0); });
    std::printf("%s\n", wasShown ? "shown" : "not shown");
    return 0;
}

/// Frames in random states, each of which is as it was before the swap.
int keepState() {
    constexpr unsigned FRAMES = 200;
    const auto context = makeContext();
    const auto other = makeContext(context.get());
    context->makeCurrent();
    const bool wasShown = isShown(*context, [&] { context->swap(); });
    RandomState program(*context, *other, context->functions());
    const StateDump dump;
    for (unsigned seed = 0; seed < FRAMES; ++seed) {
        const bool mayBind = program.set(seed, dump).rebinds;
        const auto before = dump.read(mayBind);
        context->swap();
        std::printf("%s", StateDump::compare(before, dump.read(mayBind)).c_str());
        program.end();
    }
    std::printf("%s\n", wasShown ? "shown" : "not shown");
    return 0;
}

/// A context of OpenGL ES 1, whose functions are in a library that no layer sees.
int drawWithEs1() {
    const auto window = makeContext();
    void* const library = dlopen("libGLESv1_CM.so.1", RTLD_NOW | RTLD_LOCAL);
    const auto get = [&](const char* name) { return library != nullptr ? dlsym(library, name) : nullptr; };
    const auto clearColor = reinterpret_cast<decltype(&glClearColor)>(get("glClearColor"));
    const auto clearBuffers = reinterpret_cast<decltype(&glClear)>(get("glClear"));
    const auto getError = reinterpret_cast<decltype(&glGetError)>(get("glGetError"));
    if (getError == nullptr || makeAnother(*window, 1) == EGL_NO_CONTEXT) {
        return 1;
    }
    for (int frame = 0; frame < 30; ++frame) {
        clearColor(1, 1, 1, 1);
        clearBuffers(GL_COLOR_BUFFER_BIT);
        window->swap();
    }
    std::printf("%td values changed, error %u\n", changedPixels(*window), getError());
    return 0;
}

}  // namespace

int main(int count, char** words) {
    const std::string way = count > 1 ? words[1] : "";
    return way == "parts"     ? drawParts(words[2])
           : way == "toolkit" ? drawAsToolkit()
           : way == "threads" ? destroyElsewhere()
           : way == "late"    ? swapByLateName()
           : way == "state"   ? keepState()
           : way == "es1"     ? drawWithEs1()
                              : 9;
}
