#include "run/ScreenRate.h"

#include "io/PlainFile.h"
#include "processes/SideProcess.h"

#include <dlfcn.h>

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <string>

namespace control {

namespace {

constexpr int LOWEST = 20;
constexpr int HIGHEST = 1000;

/// A server that does not answer, as one that is stopped, must not keep the program from starting.
constexpr std::chrono::milliseconds ANSWER_WITHIN(500);

/// What is needed of libX11 and libXrandr, which a machine without a screen may lack.
struct X {
    using Display = void;
    using Configuration = void;

    X() {
        void* const x11 = dlopen("libX11.so.6", RTLD_LAZY | RTLD_LOCAL);
        void* const randr = x11 != nullptr ? dlopen("libXrandr.so.2", RTLD_LAZY | RTLD_LOCAL) : nullptr;
        isComplete = randr != nullptr && find(x11, "XOpenDisplay", open) &&
                     find(x11, "XDefaultRootWindow", root) && find(randr, "XRRQueryExtension", query) &&
                     find(randr, "XRRGetScreenInfo", configuration) &&
                     find(randr, "XRRConfigCurrentRate", rate);
    }

    template <typename Function>
    static bool find(void* library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(library, name));
        return function != nullptr;
    }

    bool isComplete = false;
    Display* (*open)(const char*) = nullptr;
    unsigned long (*root)(Display*) = nullptr;
    int (*query)(Display*, int*, int*) = nullptr;
    Configuration* (*configuration)(Display*, unsigned long) = nullptr;
    short (*rate)(Configuration*) = nullptr;
};

/// 0 when it says none.
int askServer() {
    const X x;
    X::Display* const display = x.isComplete ? x.open(nullptr) : nullptr;
    int rate = 0;
    int ignored = 0;
    if (display != nullptr && x.query(display, &ignored, &ignored) != 0) {
        if (X::Configuration* const screen = x.configuration(display, x.root(display))) {
            rate = x.rate(screen);
        }
    }
    return rate;
}

}  // namespace

std::optional<int> screenRate() {
    const char* const name = std::getenv("DISPLAY");  // NOLINT(concurrency-mt-unsafe): there is one thread
    if (name == nullptr || *name == '\0') {
        return std::nullopt;
    }
    const std::string text = SideProcess([](int output) {
                                 const std::string rate = std::to_string(askServer());
                                 platform::writeAll(output, rate);
                             }).finish(ANSWER_WITHIN);
    int rate = 0;
    std::from_chars(text.data(), text.data() + text.size(), rate);
    return rate >= LOWEST && rate <= HIGHEST ? std::optional(rate) : std::nullopt;
}

}  // namespace control
