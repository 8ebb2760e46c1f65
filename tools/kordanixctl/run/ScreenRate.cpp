#include "run/ScreenRate.h"

#include <dlfcn.h>

#include <cstdlib>

namespace control {

namespace {

constexpr int LOWEST = 20;
constexpr int HIGHEST = 1000;

/// What is needed of libX11 and libXrandr, which a machine without a screen may lack.
struct X {
    using Display = void;
    using Configuration = void;

    X() {
        void* const x11 = dlopen("libX11.so.6", RTLD_LAZY | RTLD_LOCAL);
        void* const randr = x11 != nullptr ? dlopen("libXrandr.so.2", RTLD_LAZY | RTLD_LOCAL) : nullptr;
        isComplete =
            randr != nullptr && find(x11, "XOpenDisplay", open) && find(x11, "XCloseDisplay", close) &&
            find(x11, "XDefaultRootWindow", root) && find(randr, "XRRQueryExtension", query) &&
            find(randr, "XRRGetScreenInfo", configuration) && find(randr, "XRRConfigCurrentRate", rate) &&
            find(randr, "XRRFreeScreenConfigInfo", freeConfiguration);
    }

    template <typename Function>
    static bool find(void* library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(library, name));
        return function != nullptr;
    }

    bool isComplete = false;
    Display* (*open)(const char*) = nullptr;
    int (*close)(Display*) = nullptr;
    unsigned long (*root)(Display*) = nullptr;
    int (*query)(Display*, int*, int*) = nullptr;
    Configuration* (*configuration)(Display*, unsigned long) = nullptr;
    short (*rate)(Configuration*) = nullptr;
    void (*freeConfiguration)(Configuration*) = nullptr;
};

}  // namespace

std::optional<int> screenRate() {
    const char* const name = std::getenv("DISPLAY");  // NOLINT(concurrency-mt-unsafe): there is one thread
    if (name == nullptr || *name == '\0') {
        return std::nullopt;
    }
    const X x;
    X::Display* const display = x.isComplete ? x.open(nullptr) : nullptr;
    if (display == nullptr) {
        return std::nullopt;
    }
    int rate = 0;
    int ignored = 0;
    if (x.query(display, &ignored, &ignored) != 0) {
        if (X::Configuration* const screen = x.configuration(display, x.root(display))) {
            rate = x.rate(screen);
            x.freeConfiguration(screen);
        }
    }
    x.close(display);
    return rate >= LOWEST && rate <= HIGHEST ? std::optional(rate) : std::nullopt;
}

}  // namespace control
