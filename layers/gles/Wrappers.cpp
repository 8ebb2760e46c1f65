#include "gles/Wrappers.h"

#include "gles/NextFunctions.h"
#include "gles/ToolkitThread.h"
#include "opengl/shim/WrappedCalls.h"

#include <cstddef>
#include <cstring>

namespace gles {

namespace {

using namespace opengl;

const std::atomic<LookUp> NEXT{findNext};

/// Programs learn here what they measure with. What they get is the loader's own, which leads to the
/// wrappers.
struct EglLookUp {
    using Type = void*(const char* name);
    static void* run(Real real, const char* name) {
        noteTimerQueries(name);
        return reinterpret_cast<Type*>(real.function)(name);
    }
};

enum class Threads { ALL, NOT_THE_TOOLKITS };

/// Every function that the layer wraps, by its number, with the class that wraps it (opengl/shim) and on
/// which threads. eglSwapBuffersWithDamageEXT is not among the names that the platform knows: the loader
/// tells of it when a program looks it up.
#define GLES_WRAPPED(EACH)                                                \
    EACH(0, eglSwapBuffers, EglSwap, NOT_THE_TOOLKITS)                    \
    EACH(1, eglSwapBuffersWithDamageKHR, EglDamageSwap, NOT_THE_TOOLKITS) \
    EACH(2, eglSwapBuffersWithDamageEXT, EglDamageSwap, NOT_THE_TOOLKITS) \
    EACH(3, eglQuerySurface, EglQuery, NOT_THE_TOOLKITS)                  \
    EACH(4, eglSetDamageRegionKHR, EglDamageRegion, NOT_THE_TOOLKITS)     \
    EACH(5, eglDestroyContext, EglDestroy, ALL)                           \
    EACH(6, eglTerminate, EglTerminate, ALL)                              \
    EACH(7, eglSurfaceAttrib, EglAttribute, ALL)                          \
    EACH(8, eglGetProcAddress, EglLookUp, ALL)                            \
    EACH(9, glBindFramebuffer, FramebufferBind, ALL)

constexpr std::size_t WRAPPED = 10;
constexpr std::size_t QUERY_SURFACE = 3;

/// The functions below the layer. Each is written once, with release order.
std::atomic<void*> gReal[WRAPPED];

template <std::size_t INDEX, typename Way, Threads THREADS, typename Type = typename Way::Type>
struct Wrapper;

template <std::size_t INDEX, typename Way, Threads THREADS, typename Result, typename... Arguments>
struct Wrapper<INDEX, Way, THREADS, Result(Arguments...)> {
    static Result call(Arguments... arguments) {
        void* const real = gReal[INDEX].load(std::memory_order_acquire);
        if (THREADS == Threads::NOT_THE_TOOLKITS && isToolkitThread()) {
            return reinterpret_cast<Result (*)(Arguments...)>(real)(arguments...);
        }
        return Way::run({real, NEXT}, arguments...);
    }
};

struct Wrapped {
    const char* name;
    void* wrapper;
};

const Wrapped TABLE[WRAPPED] = {
#define GLES_ROW(index, name, Way, threads) \
    {#name, reinterpret_cast<void*>(&Wrapper<index, Way, Threads::threads>::call)},
    GLES_WRAPPED(GLES_ROW)
#undef GLES_ROW
};

}  // namespace

void* wrap(const char* name, void* real) {
    for (std::size_t i = 0; i < WRAPPED; ++i) {
        if (real == nullptr || std::strcmp(name, TABLE[i].name) != 0) {
            continue;
        }
        // When a list has the layer twice, what is below the second one is our own wrapper.
        void* known = nullptr;
        const bool isOurs = gReal[i].compare_exchange_strong(known, real) || known == real;
        return isOurs ? TABLE[i].wrapper : real;
    }
    return real;
}

}  // namespace gles

namespace opengl {

void* realQuerySurface(void*) {
    return gles::gReal[gles::QUERY_SURFACE].load(std::memory_order_acquire);
}

}  // namespace opengl
