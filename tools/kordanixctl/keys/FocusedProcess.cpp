#include "keys/FocusedProcess.h"

#include "processes/ProcessInfo.h"

#include <X11/Xatom.h>

namespace control {

namespace {

constexpr int MAX_DEPTH = 32;

/// The window with the focus; None when there is none. Without a window manager it may be where the pointer
/// is.
Window focusedWindow(const XFunctions& x, Display* display) {
    Window window = None;
    int ignored = 0;
    x.getInputFocus(display, &window, &ignored);
    if (window == PointerRoot) {
        Window root = None;
        Window child = None;
        unsigned int mask = 0;
        x.queryPointer(display, DefaultRootWindow(display), &root, &child, &ignored, &ignored, &ignored,
                       &ignored, &mask);
        window = child;
    }
    return window;
}

/// 0 when the server does not tell.
pid_t clientOf(Window window, const XFunctions& x, Display* display) {
    pid_t process = 0;
    int ignored = 0;
    if (x.hasClientIds() && x.queryExtension(display, "X-Resource", &ignored, &ignored, &ignored) != 0) {
        XResClientIdSpec wanted = {window, XRES_CLIENT_ID_PID_MASK};
        long count = 0;
        XResClientIdValue* values = nullptr;
        x.queryClientIds(display, 1, &wanted, &count, &values);
        for (long i = 0; i < count; ++i) {
            process = x.getClientPid(&values[i]);
        }
        x.destroyClientIds(count, values);
    }
    return process > 0 ? process : 0;
}

/// What the window or the nearest of those around it says; 0 for nothing.
pid_t statedProcess(Window window, const XFunctions& x, Display* display) {
    const Atom name = x.internAtom(display, "_NET_WM_PID", False);
    for (int depth = 0; window != None && depth < MAX_DEPTH; ++depth) {
        Atom type = None;
        int format = 0;
        unsigned long count = 0;
        unsigned long rest = 0;
        unsigned char* value = nullptr;
        const int failure = x.getWindowProperty(display, window, name, 0, 1, False, XA_CARDINAL, &type,
                                                &format, &count, &rest, &value);
        const bool isThere = failure == Success && value != nullptr && format == 32 && count == 1;
        const auto process = isThere ? static_cast<pid_t>(*reinterpret_cast<const unsigned long*>(value)) : 0;
        if (value != nullptr) {
            x.free(value);
        }
        if (process > 0) {
            return process;
        }
        Window root = None;
        Window parent = None;
        Window* children = nullptr;
        unsigned int childCount = 0;
        if (x.queryTree(display, window, &root, &parent, &children, &childCount) == 0) {
            break;
        }
        if (children != nullptr) {
            x.free(children);
        }
        window = parent;
    }
    return 0;
}

}  // namespace

bool isFocusIn(const std::function<bool(pid_t)>& isMember, const XFunctions& x, Display* display) {
    const Window window = focusedWindow(x, display);
    if (window == None) {
        return false;
    }
    const pid_t client = clientOf(window, x, display);
    if (client > 0 && startTime(client)) {
        return isMember(client);
    }
    const pid_t stated = statedProcess(window, x, display);
    return stated > 0 && isMember(stated);
}

}  // namespace control
