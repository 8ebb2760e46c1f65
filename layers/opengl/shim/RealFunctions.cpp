#include "opengl/shim/RealFunctions.h"

#include <dlfcn.h>
#include <link.h>

#include <initializer_list>

namespace opengl {

namespace {

/// The functions that callers of an exported function reach when the program as a whole has none: each
/// library that somebody opened separately has its own.
struct CallersFunction {
    std::atomic<const void*> caller{nullptr};
    std::atomic<void*> real{nullptr};
};

constexpr std::size_t CALLERS = 4;
CallersFunction gCallers[HOOKS][CALLERS];

std::atomic<FindSymbol> gFindSymbol{nullptr};

/// Returns a handle of the library with the code or data at `address`. Nobody ever closes it, since the
/// library's functions may be called again.
void* libraryOf(const void* address) {
    Dl_info info;
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return nullptr;
    }
    return dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

void* findIn(void* library, Hook hook) {
    if (library == nullptr) {
        return nullptr;
    }
    void* const found = realFindSymbol()(library, HOOK_NAMES[static_cast<std::size_t>(hook)]);
    return found == exportedFunction(hook) ? nullptr : found;
}

/// Finds the next function of that name after the shim's. Not by a tail call: RTLD_NEXT would then start
/// after our caller.
void* findNext(Hook hook) {
    void* const found = realFindSymbol()(RTLD_NEXT, HOOK_NAMES[static_cast<std::size_t>(hook)]);
    asm volatile("" ::: "memory");
    return found;
}

void* findByCaller(Hook hook, const void* caller) {
    if (void* const found = findIn(libraryOf(caller), hook)) {
        return found;
    }
    // A tail call hides who the caller really is. It may be one of the libraries whose functions we know, or
    // one of the usual ones.
    for (const auto& slots : gSlots) {
        for (const Slot& slot : slots) {
            const void* const real = slot.real.load(std::memory_order_acquire);
            void* const found = real == nullptr ? nullptr : findIn(libraryOf(real), hook);
            if (found != nullptr) {
                return found;
            }
        }
    }
    for (const char* name :
         {"libGL.so.1", "libGLX.so.0", "libEGL.so.1", "libGLESv2.so.2", "libOpenGL.so.0"}) {
        if (void* const found = findIn(dlopen(name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE), hook)) {
            return found;
        }
    }
    return nullptr;
}

}  // namespace

FindSymbol realFindSymbol() {
    FindSymbol find = gFindSymbol.load(std::memory_order_relaxed);
    if (find != nullptr) {
        return find;
    }
    for (const char* version : {"GLIBC_2.34", "GLIBC_2.17", "GLIBC_2.2.5", "GLIBC_2.0"}) {
        find = reinterpret_cast<FindSymbol>(dlvsym(RTLD_NEXT, "dlsym", version));
        if (find != nullptr) {
            break;
        }
    }
    gFindSymbol.store(find, std::memory_order_relaxed);
    return find;
}

void* resolveExported(Hook hook, const void* caller) {
    const auto index = static_cast<std::size_t>(hook);
    Slot& slot = gSlots[index][0];
    if (void* const real = slot.real.load(std::memory_order_acquire)) {
        return real;
    }
    if (void* const real = findNext(hook)) {
        libraryOf(real);
        slot.real.store(real, std::memory_order_release);
        return real;
    }
    for (const CallersFunction& known : gCallers[index]) {
        if (known.caller.load(std::memory_order_acquire) == caller) {
            if (void* const real = known.real.load(std::memory_order_acquire)) {
                return real;
            }
        }
    }
    void* const real = findByCaller(hook, caller);
    for (CallersFunction& free : gCallers[index]) {
        const void* none = nullptr;
        if (real != nullptr && free.caller.compare_exchange_strong(none, caller)) {
            libraryOf(real);
            free.real.store(real, std::memory_order_release);
            break;
        }
    }
    return real;
}

void* wrap(Hook hook, void* real, LookUp lookUp) {
    const auto index = static_cast<std::size_t>(hook);
    for (const void* wrapper : WRAPPERS[index]) {
        if (wrapper == real) {
            return real;  // a look-up function that calls another one
        }
    }
    for (std::size_t i = 1; i < SLOTS; ++i) {
        Slot& slot = gSlots[index][i];
        void* owner = nullptr;
        if (slot.real.compare_exchange_strong(owner, real) || owner == real) {
            LookUp none = nullptr;
            slot.lookUp.compare_exchange_strong(none, lookUp);
            return WRAPPERS[index][i];
        }
    }
    return real;
}

bool isMissingAfter(const void* caller, Hook hook) {
    if (findNext(hook) != nullptr) {
        return false;
    }
    Dl_info info;
    void* callersMap = nullptr;
    void* shimsMap = nullptr;
    if (dladdr1(caller, &info, &callersMap, RTLD_DL_LINKMAP) == 0 ||
        dladdr1(&gSlots, &info, &shimsMap, RTLD_DL_LINKMAP) == 0) {
        return false;
    }
    // The list begins with what the program started with, in the order of the search.
    for (const link_map* map = static_cast<link_map*>(shimsMap)->l_prev; map != nullptr; map = map->l_prev) {
        if (map == callersMap) {
            return true;
        }
    }
    return false;
}

void* findHooked(Hook hook, void* handle, const void* caller) {
    const char* const name = HOOK_NAMES[static_cast<std::size_t>(hook)];
    void* const real = realFindSymbol()(handle, name);
    if (real == nullptr || real != exportedFunction(hook)) {
        // RTLD_DEFAULT may find a function that the program or a library before the shim provides.
        return real == nullptr || handle == RTLD_DEFAULT ? real : wrap(hook, real, nullptr);
    }
    if (findNext(hook) != nullptr) {
        return real;
    }
    if (handle == RTLD_DEFAULT) {
        if (void* const callers = findIn(libraryOf(caller), hook)) {
            return wrap(hook, callers, nullptr);
        }
    }
    return findNext(hook);  // returns null, and dlerror() says why
}

void* wrapLookedUp(const char* name, void* found, LookUp lookUp) {
    const Hook hook = found != nullptr && name != nullptr ? findHook(name) : Hook::COUNT;
    if (hook == Hook::COUNT) {
        return found;
    }
    if (found != exportedFunction(hook)) {
        return wrap(hook, found, lookUp);
    }
    // The library looked up its own function by name and got the exported one.
    void* const real = findIn(libraryOf(reinterpret_cast<void*>(lookUp)), hook);
    return real != nullptr ? wrap(hook, real, lookUp) : found;
}

}  // namespace opengl
