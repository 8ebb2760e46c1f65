#include "keys/XFunctions.h"

#include <dlfcn.h>

namespace control {

namespace {

void* openLibrary(const char* name) {
    return dlopen(name, RTLD_LAZY | RTLD_LOCAL);
}

template <typename Function>
bool find(void* library, const char* name, Function& function) {
    function = library == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

}  // namespace

bool XFunctions::load() {
    void* const x11 = openLibrary("libX11.so.6");
    void* const input = openLibrary("libXi.so.6");
    void* const resources = openLibrary("libXRes.so.1");
    const bool hasAll = find(resources, "XResQueryClientIds", queryClientIds) &&
                        find(resources, "XResGetClientPid", getClientPid) &&
                        find(resources, "XResClientIdsDestroy", destroyClientIds);
    destroyClientIds = hasAll ? destroyClientIds : nullptr;
    return find(x11, "XOpenDisplay", openDisplay) && find(x11, "XSetErrorHandler", setErrorHandler) &&
           find(x11, "XQueryExtension", queryExtension) && find(x11, "XFlush", flush) &&
           find(x11, "XNextEvent", nextEvent) && find(x11, "XGetEventData", getEventData) &&
           find(x11, "XFreeEventData", freeEventData) &&
           find(x11, "XRefreshKeyboardMapping", refreshKeyboardMapping) &&
           find(x11, "XkbKeycodeToKeysym", keycodeToKeysym) && find(x11, "XQueryKeymap", queryKeymap) &&
           find(x11, "XGetInputFocus", getInputFocus) && find(x11, "XQueryPointer", queryPointer) &&
           find(x11, "XQueryTree", queryTree) && find(x11, "XInternAtom", internAtom) &&
           find(x11, "XGetWindowProperty", getWindowProperty) && find(x11, "XFree", free) &&
           find(input, "XIQueryVersion", queryInputVersion) &&
           find(input, "XISelectEvents", selectInputEvents);
}

}  // namespace control
