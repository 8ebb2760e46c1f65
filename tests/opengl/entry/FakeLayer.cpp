// In the place of the layer: prints what the shim tells it, and spoils what it must not.

#include "opengl/shim/LayerCalls.h"

#include <cerrno>
#include <cstdio>

namespace {

using opengl::Swap;
using opengl::SwapResult;

const opengl::ShimCalls* gShim = nullptr;
int gFrames = 0;

constexpr opengl::LayerCalls CALLS = {
    [](const Swap& swap) {
        std::printf("layer: before %s swap%s\n",
                    swap.windowSystem == opengl::WindowSystem::EGL ? "EGL" : "GLX",
                    swap.lookUp != nullptr ? ", looked up" : "");
        errno = EDOM;
        gShim->framebufferListener->store([] { std::printf("layer: framebuffer\n"); });
        ++gFrames;
        return SwapResult{&gFrames, gFrames == 2 || gFrames == 3};
    },
    [](void* frame) {
        std::printf("layer: after%s\n", frame == &gFrames ? "" : " something else");
        errno = EDOM;
    },
    [](opengl::WindowSystem, void*, void* context) {
        std::printf("layer: destroyed %s\n", context == nullptr ? "all" : "one");
    },
};

}  // namespace

extern "C" [[gnu::visibility("default")]] const opengl::LayerCalls* kordanixOpenGlLayer(
    const opengl::ShimCalls* shim) {
    gShim = shim;
    std::printf("layer: loaded\n");
    return &CALLS;
}
