#include "opengl/context/VirtualDisplay.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

constexpr std::chrono::milliseconds BETWEEN_LOOKS(150);
constexpr int LOOKS = 200;
constexpr int USABLE_LOOKS = 3;

/// The largest window that is shown; an empty picture when there is none.
software::Image lookAtWindow(Display* display) {
    software::Image picture;
    Window root = 0;
    Window parent = 0;
    Window* windows = nullptr;
    unsigned int count = 0;
    XQueryTree(display, DefaultRootWindow(display), &root, &parent, &windows, &count);
    Window largest = 0;
    XWindowAttributes shape{};
    for (unsigned int i = 0; i < count; ++i) {
        XWindowAttributes attributes{};
        if (XGetWindowAttributes(display, windows[i], &attributes) != 0 &&
            attributes.map_state == IsViewable &&
            attributes.width * attributes.height > shape.width * shape.height) {
            largest = windows[i];
            shape = attributes;
        }
    }
    XFree(windows);
    XImage* image = largest == 0 ? nullptr
                                 : XGetImage(display, largest, 0, 0, static_cast<unsigned int>(shape.width),
                                             static_cast<unsigned int>(shape.height), AllPlanes, ZPixmap);
    if (image == nullptr) {
        return picture;
    }
    picture.resize(static_cast<std::uint32_t>(shape.width), static_cast<std::uint32_t>(shape.height));
    for (int y = 0; y < shape.height; ++y) {
        for (int x = 0; x < shape.width; ++x) {
            const unsigned long value = XGetPixel(image, x, y);
            picture.row(static_cast<std::size_t>(y))[x] = {static_cast<std::uint8_t>(value >> 16U),
                                                           static_cast<std::uint8_t>(value >> 8U),
                                                           static_cast<std::uint8_t>(value), 255};
        }
    }
    XDestroyImage(image);
    return picture;
}

bool hasSeveralColours(const software::Image& picture) {
    return std::any_of(picture.mPixels.begin(), picture.mPixels.end(),
                       [&](const software::Pixel& pixel) { return !(pixel == picture.mPixels.front()); });
}

}  // namespace

VirtualDisplay::VirtualDisplay()
    : mServer({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"}) {
    // The server writes its number and a new line when it is ready.
    const auto isReady = [this] { return mServer.output().find('\n') != std::string::npos; };
    if (support::waitUntil(isReady)) {
        const std::string number = mServer.output();
        mName = ':' + number.substr(0, number.find('\n'));
        setenv("DISPLAY", mName.c_str(), 1);
        // A window may go between two requests about it.
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    }
}

VirtualDisplay& VirtualDisplay::get() {
    static VirtualDisplay display;
    return display;
}

std::optional<software::Image> VirtualDisplay::windowPicture(bool isStill) const {
    Display* const display = XOpenDisplay(mName.c_str());
    std::optional<software::Image> found;
    software::Image last;
    int usable = 0;
    for (int look = 0; display != nullptr && !found && look < LOOKS; ++look) {
        std::this_thread::sleep_for(BETWEEN_LOOKS);
        software::Image picture = lookAtWindow(display);
        const bool isUsable = hasSeveralColours(picture) && (!isStill || picture.mPixels == last.mPixels);
        usable = isUsable ? usable + 1 : 0;
        if (usable >= USABLE_LOOKS) {
            found = picture;
        }
        last = std::move(picture);
    }
    if (display != nullptr) {
        XCloseDisplay(display);
    }
    return found;
}
