// A program that swaps, or does not, in the way that its first argument names. Prints whatever it could tell
// the shim by. Built as a program linked to no library, as one linked to the fake window system, and as a
// plugin that is so linked while the program is not.

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#ifdef LINKED
extern "C" unsigned int eglSwapBuffers(void* display, void* surface);
extern "C" int askNext();
#else
static unsigned int eglSwapBuffers(void*, void*) {
    return 0;
}
static int askNext() {
    return 0;
}
#endif

// What the plugin is for.
extern "C" [[gnu::visibility("default")]] unsigned int swapLinked(void* display);
unsigned int swapLinked(void* display) {
    return eglSwapBuffers(display, nullptr) + 1;  // not by a jump, which would hide who calls
}

namespace {

int gObject = 0;  // whose address is a display, a surface, a context

using Swap = unsigned int (*)(void*, void*);
using LookUp = void* (*)(const char*);

template <typename Function = Swap>
Function find(void* library, const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}

void swap(Swap function) {
    errno = EAGAIN;
    const unsigned int result = function(&gObject, &gObject);
    std::printf("result %u, errno %d\n", result, errno);
}

void printFound(const char* what, void* found) {
    std::printf("%s: %s, %s\n", what, found != nullptr ? "found" : "not found",
                dlerror() != nullptr ? "an error" : "no error");
}

int run(const std::string& way, const char* fake, const char* other) {
    if (way == "plain") {
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);) {
            if (line.find("r-xp") != std::string::npos && line.find("kordanix-") != std::string::npos) {
                std::printf("%s: mapped\n", line.find("preload") != std::string::npos ? "layer" : "other");
            }
        }
    } else if (way == "missing") {
        printFound("default", dlsym(RTLD_DEFAULT, "eglSwapBuffers"));
        printFound("next", dlsym(RTLD_NEXT, "eglSwapBuffers"));
        printFound("own handle", dlsym(dlopen(nullptr, RTLD_LAZY), "eglSwapBuffers"));
        void* const library = dlopen(fake, RTLD_NOW | RTLD_GLOBAL);
        printFound("default", dlsym(RTLD_DEFAULT, "eglSwapBuffers"));
        printFound("no such", dlsym(library, "eglSwapBuffersWithDamageEXT"));
        swap(find(RTLD_DEFAULT, "eglSwapBuffers"));
    } else if (way == "linked") {
        std::printf("result %u\n", swapLinked(&gObject));
    } else if (way == "plugin") {
        void* const plugin = dlopen(fake, RTLD_NOW | RTLD_LOCAL);
        std::printf("result %u\n", find<unsigned int (*)(void*)>(plugin, "swapLinked")(&gObject));
    } else if (way == "deep") {
        void* const plugin = dlopen(fake, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
        std::printf("result %u\n", find<unsigned int (*)(void*)>(plugin, "swapLinked")(&gObject));
        if (vfork() == 0) {
            _exit(0);
        }
    } else if (way == "handles") {
        void* const first = dlopen(fake, RTLD_NOW | RTLD_LOCAL);
        void* const second = dlopen(other, RTLD_NOW | RTLD_LOCAL);
        swap(find(first, "eglSwapBuffers"));
        swap(find(second, "eglSwapBuffers"));
        swap(find(first, "eglSwapBuffers"));
    } else if (way == "lookup") {
        const auto lookUp = find<LookUp>(dlopen(fake, RTLD_NOW | RTLD_LOCAL), "eglGetProcAddress");
        for (int i = 0; i < 5; ++i) {  // of which the last are more than there is room for
            swap(reinterpret_cast<Swap>(lookUp("eglSwapBuffers")));
        }
    } else if (way == "nested") {
        const auto lookUp = find<LookUp>(dlopen(fake, RTLD_NOW | RTLD_LOCAL), "glXGetProcAddressARB");
        reinterpret_cast<void (*)(void*, unsigned long)>(lookUp("glXSwapBuffers"))(&gObject, 1);
    } else if (way == "rest") {
        void* const library = dlopen(fake, RTLD_NOW | RTLD_LOCAL);
        const auto bind = find<void (*)(unsigned int, unsigned int)>(library, "glBindFramebuffer");
        const auto damage =
            find<unsigned int (*)(void*, void*, const int*, int)>(library, "eglSwapBuffersWithDamageKHR");
        const auto destroy = find(library, "eglDestroyContext");
        const int rects[8] = {};
        bind(1, 2);
        destroy(&gObject, &gObject);
        damage(&gObject, &gObject, rects, 2);
        bind(3, 4);
        damage(&gObject, &gObject, rects, 2);
        destroy(&gObject, nullptr);
        destroy(&gObject, &gObject);
    } else if (way == "parts") {
        void* const library = dlopen(fake, RTLD_NOW | RTLD_LOCAL);
        const auto query = find<unsigned int (*)(void*, void*, int, int*)>(library, "eglQuerySurface");
        const auto setRegion =
            find<unsigned int (*)(void*, void*, int*, int)>(library, "eglSetDamageRegionKHR");
        const auto queryDrawable =
            find<void (*)(void*, unsigned long, int, unsigned int*)>(library, "glXQueryDrawable");
        for (int frame = 0; frame < 6; ++frame) {
            int rects[8] = {1, 2, 3, 4};
            int age = -1;
            unsigned int drawablesAge = 0;
            query(&gObject, &gObject, 0x313D, &age);
            queryDrawable(&gObject, reinterpret_cast<std::uintptr_t>(&gObject), 0x20F4, &drawablesAge);
            std::printf("ages %d, %u\n", age, drawablesAge);
            setRegion(&gObject, &gObject, rects, 2);
            find(library, "eglSwapBuffers")(&gObject, &gObject);
        }
    } else if (way == "next") {
        std::printf("next %d\n", askNext());
    }
    return 0;
}

}  // namespace

int main(int count, char** words) {
    std::setbuf(stdout, nullptr);
    return count > 3 ? run(words[1], words[2], words[3]) : 2;
}
