// EGL and GLX as a library that prints what is called. Built twice, under a NAME and a NUMBER of its own
// each.

#include <dlfcn.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#define EXPORT extern "C" [[gnu::visibility("default")]]

namespace {

void print(const char* function) {
    std::printf("%s: %s\n", NAME, function);
    errno = ERANGE;
}

template <int FOUND>
unsigned int swapOf(void*, void*) {
    std::printf("%s: swap %d\n", NAME, FOUND);
    return FOUND;
}

using Swap = unsigned int (*)(void*, void*);

/// Each look-up of eglSwapBuffers finds another function.
void* find(const char* name) {
    static const Swap SWAPS[] = {swapOf<0>, swapOf<1>, swapOf<2>, swapOf<3>, swapOf<4>};
    static int found = 0;
    const bool isSwap = std::strcmp(name, "eglSwapBuffers") == 0;
    return isSwap ? reinterpret_cast<void*>(SWAPS[found++ % 5]) : nullptr;
}

}  // namespace

EXPORT unsigned int eglSwapBuffers(void* display, void*) {
    print("eglSwapBuffers");
    return display == nullptr ? 0 : 42;
}

EXPORT unsigned int eglSwapBuffersWithDamageKHR(void*, void*, const int*, int count) {
    std::printf("%s: damage of %d rectangles\n", NAME, count);
    return 1;
}

/// Every buffer is two frames old, and every other attribute a number.
EXPORT unsigned int eglQuerySurface(void*, void*, int attribute, int* value) {
    *value = attribute == 0x313D ? 2 : attribute;
    return 1;
}

EXPORT unsigned int eglSetDamageRegionKHR(void*, void*, int* rects, int count) {
    std::printf("%s: region %d %d %d %d of %d\n", NAME, rects[0], rects[1], rects[2], rects[3], count);
    return 1;
}

EXPORT void glXQueryDrawable(void*, unsigned long, int, unsigned int* value) {
    *value = 2;
}

EXPORT std::int64_t glXSwapBuffersMscOML(void*, unsigned long, std::int64_t target, std::int64_t divisor,
                                         std::int64_t remainder) {
    print("glXSwapBuffersMscOML");
    return target + divisor + remainder;
}

/// A hooked function within another, reached as the linker has it.
EXPORT void glXSwapBuffers(void* display, unsigned long drawable) {
    print("glXSwapBuffers");
    glXSwapBuffersMscOML(display, drawable, 0, 0, 0);
}

EXPORT void* eglGetProcAddress(const char* name) {
    return find(name);
}

EXPORT void* glXGetProcAddressARB(const char* name) {
    return std::strcmp(name, "glXSwapBuffers") == 0 ? reinterpret_cast<void*>(&glXSwapBuffers) : find(name);
}

EXPORT unsigned int eglDestroyContext(void*, void*) {
    print("eglDestroyContext");
    return 1;
}

EXPORT void glBindFramebuffer(unsigned int target, unsigned int framebuffer) {
    std::printf("%s: framebuffer %u %u\n", NAME, target, framebuffer);
}

EXPORT int whoIsNext() {
    return NUMBER;
}

EXPORT int askNext() {
    const auto next = reinterpret_cast<int (*)()>(dlsym(RTLD_NEXT, "whoIsNext"));
    return next != nullptr ? next() : 0;
}
