// Android's loader of GLES layers, played over the libraries of this machine: libEGL.so.1 and libGLESv2.so.2,
// to be found before the real ones. Each name that the platform knows is a jump through a table, whose end is
// the real function; the layers that $LOADER_LAYERS lists (files, ":" between them, the first nearest to the
// program) put theirs in between. It keeps Android's rules, and where a device would hang or call a wrong
// function, it says so and aborts. $LOADER_ES2 set: the driver has nothing of OpenGL ES 3. $LOADER_WITHOUT:
// an extension that it lacks. $LOADER_TRACE set: what reaches the driver is printed.

#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

enum class Kind { EGL, ES2, ES3, EXTENSION };

struct Name {
    const char* text;
    Kind kind;
};

const Name NAMES[] = {
#define NAME(index, name, kind) {#name, Kind::kind},
#include "names.inc"
#undef NAME
};

constexpr std::size_t COUNT = sizeof(NAMES) / sizeof(NAMES[0]);

}  // namespace

extern "C" {
[[gnu::visibility("hidden")]] extern void* gPublic[COUNT];
void* gPublic[COUNT] = {};
}

#define NAME(index, name, kind)                                                                   \
    asm(".text\n.globl " #name "\n.type " #name ",@function\n" #name ":\n jmp *gPublic+8*" #index \
        "(%rip)\n");                                                                              \
    extern "C" void name();
#include "names.inc"
#undef NAME

namespace {

using Function = void*;

const Function EXPORTED[] = {
#define NAME(index, name, kind) reinterpret_cast<Function>(&name),
#include "names.inc"
#undef NAME
};

struct Layer {
    Function below[COUNT];
    Function (*getProcAddress)(const char* name, Function next);
};

Function gReal[COUNT];
Function gDriver[COUNT];
std::vector<Layer*> gLayers;  // the one next to the driver first
Function (*gRealLookUp)(const char*) = nullptr;

/// Whether this thread is in a layer's entry point, under a lock that is not recursive.
thread_local bool gIsLocked = false;

[[noreturn]] void fail(const char* what, const char* name) {
    std::fprintf(stderr, "loader: %s: %s\n", what, name);
    std::abort();
}

template <typename... Arguments>
void trace(const char* format, Arguments... arguments) {
    if (std::getenv("LOADER_TRACE") != nullptr) {
        std::printf(format, arguments...);
        std::fflush(stdout);
    }
}

std::size_t indexOf(const std::string& name) {
    static const auto& known = *new std::map<std::string, std::size_t>([] {
        std::map<std::string, std::size_t> all;
        for (std::size_t i = 0; i < COUNT; ++i) {
            all[NAMES[i].text] = i;
        }
        return all;
    }());
    const auto found = known.find(name);
    return found != known.end() ? found->second : COUNT;
}

Function& of(Function (&table)[COUNT], const char* name) {
    return table[indexOf(name)];
}

/// The real function of that name.
template <typename Type>
Type* real(const char* name) {
    return reinterpret_cast<Type*>(of(gReal, name));
}

// The driver: the real functions, but for what Mesa lacks without a screen. Its back buffer keeps its
// picture.

struct Surface {
    int swaps = 0;
    bool isAgeRead = false;
    bool hasRegion = false;
};

std::mutex gSurfacesMutex;
std::map<void*, Surface> gSurfaces;

unsigned int swap(void* display, void* surface) {
    {
        const std::lock_guard<std::mutex> lock(gSurfacesMutex);
        Surface& state = gSurfaces[surface];
        state = {state.swaps + 1, false, false};
    }
    return real<unsigned int(void*, void*)>("eglSwapBuffers")(display, surface);
}

unsigned int swapWithDamage(void* display, void* surface, const int*, int count) {
    trace("damage of %d rectangles\n", count);
    return swap(display, surface);
}

unsigned int query(void* display, void* surface, int attribute, int* value) {
    constexpr int BUFFER_AGE = 0x313D;
    if (attribute != BUFFER_AGE) {
        return real<unsigned int(void*, void*, int, int*)>("eglQuerySurface")(display, surface, attribute,
                                                                              value);
    }
    const std::lock_guard<std::mutex> lock(gSurfacesMutex);
    Surface& state = gSurfaces[surface];
    state.isAgeRead = true;
    *value = state.swaps > 0 ? 1 : 0;
    return 1;
}

unsigned int setDamageRegion(void*, void* surface, const int* rects, int count) {
    const std::lock_guard<std::mutex> lock(gSurfacesMutex);
    Surface& state = gSurfaces[surface];
    const bool isAllowed = state.isAgeRead && !state.hasRegion;
    state.hasRegion = true;
    if (count == 1) {
        trace("region %d %d %d %d\n", rects[0], rects[1], rects[2], rects[3]);
    }
    return isAllowed ? 1 : 0;
}

// A context's handle is Android's own, not the driver's. The next context after one that was destroyed, and
// is no longer current, has its handle.

struct Context {
    std::atomic<void*> drivers{nullptr};
    std::atomic<int> threads{0};  // on which it is current
};

constexpr std::size_t CONTEXTS = 64;
Context gContexts[CONTEXTS];
thread_local Context* gCurrent = nullptr;

void* driversContext(void* handle) {
    if (handle != nullptr && (handle < std::begin(gContexts) || handle >= std::end(gContexts))) {
        fail("a layer passed a handle on", "it is not the platform's");
    }
    return handle != nullptr ? static_cast<Context*>(handle)->drivers.load() : nullptr;
}

void* createContext(void* display, void* config, void* share, const int* attributes) {
    void* const created = real<void*(void*, void*, void*, const int*)>("eglCreateContext")(
        display, config, driversContext(share), attributes);
    for (Context& each : gContexts) {
        void* none = nullptr;
        if (created != nullptr && each.threads == 0 && each.drivers.compare_exchange_strong(none, created)) {
            return &each;
        }
    }
    return nullptr;
}

unsigned int destroyContext(void* display, void* handle) {
    void* const context =
        handle != nullptr ? static_cast<Context*>(handle)->drivers.exchange(nullptr) : nullptr;
    return real<unsigned int(void*, void*)>("eglDestroyContext")(display, context);
}

unsigned int makeCurrent(void* display, void* draw, void* read, void* handle) {
    const unsigned int result = real<unsigned int(void*, void*, void*, void*)>("eglMakeCurrent")(
        display, draw, read, driversContext(handle));
    if (result != 0) {
        Context* const last = std::exchange(gCurrent, static_cast<Context*>(handle));
        if (handle != nullptr) {
            ++gCurrent->threads;
        }
        if (last != nullptr) {
            --last->threads;
        }
    }
    return result;
}

void* getCurrentContext() {
    return gCurrent;
}

unsigned int queryContext(void* display, void* handle, int attribute, int* value) {
    void* const context = driversContext(handle);
    return context == nullptr ? 0
                              : real<unsigned int(void*, void*, int, int*)>("eglQueryContext")(
                                    display, context, attribute, value);
}

const char* getStringi(unsigned int name, unsigned int index) {
    const char* const text = real<const char*(unsigned int, unsigned int)>("glGetStringi")(name, index);
    const char* const without = std::getenv("LOADER_WITHOUT");
    return text != nullptr && without != nullptr && std::strcmp(text, without) == 0 ? "" : text;
}

unsigned int unimplemented() {
    std::fprintf(stderr, "loader: called unimplemented OpenGL ES API\n");
    return 0;
}

/// The platform's own look-up: known names are what it exports, others the driver's with the layers before
/// it.
Function lookUp(const char* name) {
    if (gIsLocked) {
        fail("a layer waits for itself, looking up", name);
    }
    const std::size_t index = indexOf(name);
    if (index < COUNT) {
        return EXPORTED[index];
    }
    Function found = gRealLookUp(name);
    if (found != nullptr && std::strncmp(name, "eglSwapBuffersWithDamage", 24) == 0) {
        found = reinterpret_cast<Function>(&swapWithDamage);
    }
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    gIsLocked = true;
    for (const Layer* layer : gLayers) {
        found = found != nullptr ? layer->getProcAddress(name, found) : nullptr;
    }
    gIsLocked = false;
    return found;
}

Function next(void* layer, const char* name) {
    const std::size_t index = indexOf(name);
    if (index == COUNT) {
        fail("a layer asked for a name that the platform does not know", name);
    }
    return static_cast<Layer*>(layer)->below[index];
}

void trap() {
    fail("a layer called a function of EGL while it was loaded", "it waits for itself");
}

void loadLayer(const std::string& path, Function (&top)[COUNT]) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const initialise = library != nullptr ? dlsym(library, "AndroidGLESLayer_Initialize") : nullptr;
    void* const getProcAddress =
        library != nullptr ? dlsym(library, "AndroidGLESLayer_GetProcAddress") : nullptr;
    if (initialise == nullptr || getProcAddress == nullptr) {
        std::fprintf(stderr, "loader: no layer: %s\n", dlerror());
        return;
    }
    auto* const layer = new Layer;
    std::memcpy(layer->below, top, sizeof top);
    layer->getProcAddress = reinterpret_cast<Function (*)(const char*, Function)>(getProcAddress);
    gLayers.push_back(layer);
    reinterpret_cast<void (*)(void*, Function (*)(void*, const char*))>(initialise)(layer, next);
    for (std::size_t i = 0; i < COUNT; ++i) {
        top[i] = layer->getProcAddress(NAMES[i].text, layer->below[i]);
        if (top[i] == nullptr) {
            fail("a layer has no function for a name", NAMES[i].text);
        }
    }
}

/// What the first eglGetDisplay, eglInitialize or eglGetProcAddress does.
void loadLayers() {
    static std::once_flag once;
    std::call_once(once, [] {
        static Function top[COUNT];
        std::memcpy(top, gDriver, sizeof top);
        for (std::size_t i = 0; i < COUNT; ++i) {
            gPublic[i] = NAMES[i].kind == Kind::EGL ? reinterpret_cast<Function>(&trap) : gDriver[i];
        }
        const char* const list = std::getenv("LOADER_LAYERS");
        std::istringstream words(list != nullptr ? list : "");
        std::vector<std::string> paths;
        for (std::string path; std::getline(words, path, ':');) {
            paths.insert(paths.begin(), path);
        }
        gIsLocked = true;
        for (const std::string& path : paths) {
            loadLayer(path, top);
        }
        gIsLocked = false;
        std::memcpy(gPublic, top, sizeof top);
    });
}

template <typename... Arguments>
struct First {
    template <const char* NAME>
    static void* call(Arguments... arguments) {
        loadLayers();
        return reinterpret_cast<void* (*)(Arguments...)>(of(gPublic, NAME))(arguments...);
    }
};

constexpr char GET_DISPLAY[] = "eglGetDisplay";
constexpr char GET_PLATFORM_DISPLAY[] = "eglGetPlatformDisplay";
constexpr char INITIALIZE[] = "eglInitialize";
constexpr char GET_PROC_ADDRESS[] = "eglGetProcAddress";

[[gnu::constructor]] void openDriver() {
    // Deeply bound: what the real libraries call of their own is not to come here.
    void* const egl = dlopen(REAL_EGL, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
    void* const gles = dlopen(REAL_GLES, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
    if (egl == nullptr || gles == nullptr) {
        fail("no driver", dlerror());
    }
    gRealLookUp = reinterpret_cast<Function (*)(const char*)>(dlsym(egl, "eglGetProcAddress"));
    for (std::size_t i = 0; i < COUNT; ++i) {
        const Name& name = NAMES[i];
        const bool isMissing = name.kind == Kind::ES3 && std::getenv("LOADER_ES2") != nullptr;
        Function found = dlsym(name.kind == Kind::EGL ? egl : gles, name.text);
        found = found != nullptr ? found : gRealLookUp(name.text);
        gDriver[i] = found != nullptr && !isMissing ? found : reinterpret_cast<Function>(&unimplemented);
    }
    const std::pair<const char*, Function> own[] = {
        {"eglCreateContext", reinterpret_cast<Function>(&createContext)},
        {"eglDestroyContext", reinterpret_cast<Function>(&destroyContext)},
        {"eglMakeCurrent", reinterpret_cast<Function>(&makeCurrent)},
        {"eglGetCurrentContext", reinterpret_cast<Function>(&getCurrentContext)},
        {"eglQueryContext", reinterpret_cast<Function>(&queryContext)},
        {"eglSwapBuffers", reinterpret_cast<Function>(&swap)},
        {"eglSwapBuffersWithDamageKHR", reinterpret_cast<Function>(&swapWithDamage)},
        {"eglQuerySurface", reinterpret_cast<Function>(&query)},
        {"eglSetDamageRegionKHR", reinterpret_cast<Function>(&setDamageRegion)},
        {"glGetStringi", reinterpret_cast<Function>(&getStringi)},
        {GET_PROC_ADDRESS, reinterpret_cast<Function>(&lookUp)},
    };
    std::memcpy(gReal, gDriver, sizeof gReal);
    for (const auto& [name, function] : own) {
        Function& driver = of(gDriver, name);
        driver = driver != reinterpret_cast<Function>(&unimplemented) ? function : driver;
    }
    std::memcpy(gPublic, gDriver, sizeof gDriver);
    of(gPublic, GET_DISPLAY) = reinterpret_cast<Function>(&First<void*>::call<GET_DISPLAY>);
    of(gPublic, GET_PLATFORM_DISPLAY) =
        reinterpret_cast<Function>(&First<unsigned int, void*, const void*>::call<GET_PLATFORM_DISPLAY>);
    of(gPublic, INITIALIZE) = reinterpret_cast<Function>(&First<void*, int*, int*>::call<INITIALIZE>);
    of(gPublic, GET_PROC_ADDRESS) = reinterpret_cast<Function>(&First<const char*>::call<GET_PROC_ADDRESS>);
}

}  // namespace
