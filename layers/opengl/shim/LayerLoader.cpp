#include "opengl/shim/LayerLoader.h"

#include "opengl/shim/RealFunctions.h"

#include <dlfcn.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

namespace opengl {

std::atomic<FramebufferListener> gFramebufferListener{nullptr};
std::atomic<unsigned int> gSurfaceChanges{0};
std::atomic<bool> gIsMeasuring{false};

namespace {

constexpr const char* LAYER_FILE = "libkordanix-opengl.so";
constexpr int MAX_PATH = 4096;

pthread_once_t gOnce = PTHREAD_ONCE_INIT;
std::atomic<const LayerCalls*> gLayer{nullptr};
std::atomic<bool> gHasSwapped{false};
ShimCalls gShimCalls{nullptr, &gFramebufferListener, &gSurfaceChanges, &gIsMeasuring};

/// Writes in the form of the host's log, because without the layer there is no library for that.
void logError(const char* message) {
    const char* const level = getenv("KORDANIX_LOG");  // the log does the same NOLINT(concurrency-mt-unsafe)
    if (level == nullptr || strchr("fFsS", level[0]) == nullptr || level[0] == '\0') {
        dprintf(STDERR_FILENO, "E/Kordanix(%5d): LayerLoader.cpp:%s(%d) The layer cannot be loaded: %s\n",
                static_cast<int>(getpid()), "load", __LINE__, message == nullptr ? "" : message);
    }
}

void load() {
    gHasSwapped.store(true, std::memory_order_relaxed);
    Dl_info info;
    char path[MAX_PATH];
    if (dladdr(&gOnce, &info) == 0) {
        logError("the shim has no file");
        return;
    }
    const char* const slash = strrchr(info.dli_fname, '/');
    const int folder = slash == nullptr ? 0 : static_cast<int>(slash + 1 - info.dli_fname);
    const int length = snprintf(path, sizeof(path), "%.*s%s", folder, info.dli_fname, LAYER_FILE);
    if (length < 0 || length >= MAX_PATH) {
        logError("the path is too long");
        return;
    }
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* const entry = library == nullptr ? nullptr : realFindSymbol()(library, "kordanixOpenGlLayer");
    if (entry == nullptr) {
        logError(dlerror());  // NOLINT(concurrency-mt-unsafe): each thread has its own
        return;
    }
    gShimCalls.findSymbol = realFindSymbol();
    gLayer.store(reinterpret_cast<decltype(&kordanixOpenGlLayer)>(entry)(&gShimCalls),
                 std::memory_order_release);
}

}  // namespace

const LayerCalls* loadLayer() {
    pthread_once(&gOnce, load);
    return loadedLayer();
}

bool hasSwapped() {
    return gHasSwapped.load(std::memory_order_relaxed);
}

const LayerCalls* loadedLayer() {
    return gLayer.load(std::memory_order_acquire);
}

}  // namespace opengl
