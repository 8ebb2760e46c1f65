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
    return next;
}
