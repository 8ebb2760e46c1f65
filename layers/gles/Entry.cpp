#include "gles/NextFunctions.h"
#include "gles/Wrappers.h"

// What Android's loader calls (API 29 and later): the first once, then the other for every name that the
// platform knows, all under a lock that a call of EGL's own functions would wait for; later, on any thread
// and under another lock, the other again for each new name that a program looks up. Neither throws.

#define GLES_EXPORT extern "C" [[gnu::visibility("default")]]

GLES_EXPORT void AndroidGLESLayer_Initialize(void* layer, gles::GetNext next) {
    gles::setNext(layer, next);
}

GLES_EXPORT void* AndroidGLESLayer_GetProcAddress(const char* name, void* next) {
    return gles::wrap(name, next);
}
