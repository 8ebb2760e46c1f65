#pragma once

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XRes.h>

namespace control {

/// What is needed of X's libraries, which a machine without a screen may lack. One thread.
struct XFunctions {
    /// Loads the libraries, which are never unloaded. Returns whether there is all that hears keys.
    bool load();

    /// Whether the server can be asked which process a window's client is.
    bool hasClientIds() const { return destroyClientIds != nullptr; }

    decltype(&::XOpenDisplay) openDisplay = nullptr;
    decltype(&::XSetErrorHandler) setErrorHandler = nullptr;
    decltype(&::XQueryExtension) queryExtension = nullptr;
    decltype(&::XFlush) flush = nullptr;
    decltype(&::XNextEvent) nextEvent = nullptr;
    decltype(&::XGetEventData) getEventData = nullptr;
    decltype(&::XFreeEventData) freeEventData = nullptr;
    decltype(&::XRefreshKeyboardMapping) refreshKeyboardMapping = nullptr;
    decltype(&::XkbKeycodeToKeysym) keycodeToKeysym = nullptr;
    decltype(&::XQueryKeymap) queryKeymap = nullptr;
    decltype(&::XGetInputFocus) getInputFocus = nullptr;
    decltype(&::XQueryPointer) queryPointer = nullptr;
    decltype(&::XQueryTree) queryTree = nullptr;
    decltype(&::XInternAtom) internAtom = nullptr;
    decltype(&::XGetWindowProperty) getWindowProperty = nullptr;
    decltype(&::XFree) free = nullptr;
    decltype(&::XIQueryVersion) queryInputVersion = nullptr;
    decltype(&::XISelectEvents) selectInputEvents = nullptr;

    // Null without their library.
    decltype(&::XResQueryClientIds) queryClientIds = nullptr;
    decltype(&::XResGetClientPid) getClientPid = nullptr;
    decltype(&::XResClientIdsDestroy) destroyClientIds = nullptr;
};

}  // namespace control
