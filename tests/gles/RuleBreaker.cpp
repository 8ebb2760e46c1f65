// A layer that breaks the rule of Android's loader that $BREAKS names.

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>

namespace {

void* (*gNext)(void*, const char*) = nullptr;
void* gLayer = nullptr;

bool breaks(const char* rule) {
    const char* const broken = std::getenv("BREAKS");
    return broken != nullptr && std::strcmp(broken, rule) == 0;
}

/// One of EGL's own functions, as the program has it.
template <typename... Arguments>
void callPublic(const char* name, Arguments... arguments) {
    reinterpret_cast<void* (*)(Arguments...)>(dlsym(RTLD_DEFAULT, name))(arguments...);
}

/// The function below the layer.
template <typename... Arguments>
unsigned int callNext(const char* name, Arguments... arguments) {
    return reinterpret_cast<unsigned int (*)(Arguments...)>(gNext(gLayer, name))(arguments...);
}

unsigned int makeCurrent(void* display, void* draw, void* read, void* /*context*/) {
    return callNext("eglMakeCurrent", display, draw, read, static_cast<void*>(&gLayer));
}

unsigned int setRegion(void* display, void* surface, int* rects, int count) {
    callNext("eglSetDamageRegionKHR", display, surface, rects, count);
    return callNext("eglSetDamageRegionKHR", display, surface, rects, count);
}

unsigned int swap(void* display, void* surface) {
    callNext("glDispatchCompute", 0U, 0U, 0U);
    return callNext("eglSwapBuffers", display, surface);
}

/// What a rule's breaker puts in the place of a function.
const struct {
    const char* rule;
    const char* name;
    void* function;
} REPLACEMENTS[] = {{"handle", "eglMakeCurrent", reinterpret_cast<void*>(makeCurrent)},
                    {"region", "eglSetDamageRegionKHR", reinterpret_cast<void*>(setRegion)},
                    {"missing", "eglSwapBuffers", reinterpret_cast<void*>(swap)},
                    {"null", "glEnable", nullptr}};

}  // namespace

#define EXPORT extern "C" [[gnu::visibility("default")]]

EXPORT void AndroidGLESLayer_Initialize(void* layer, void* (*next)(void*, const char*)) {
    gNext = next;
    gLayer = layer;
    if (breaks("public")) {
        callPublic("eglGetCurrentContext");
    }
}

EXPORT void* AndroidGLESLayer_GetProcAddress(const char* name, void* next) {
    if (breaks("unknown") && std::strcmp(name, "glEnable") == 0) {
        gNext(gLayer, "glColorMaskIndexedEXT");
    }
    if (breaks("waits") && std::strcmp(name, "eglSwapBuffersWithDamageEXT") == 0) {
        callPublic("eglGetProcAddress", "eglSwapBuffersWithDamageKHR");
    }
    for (const auto& each : REPLACEMENTS) {
        if (breaks(each.rule) && std::strcmp(name, each.name) == 0) {
            return each.function;
        }
    }
    return next;
}
