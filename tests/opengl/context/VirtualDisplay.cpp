#include "opengl/context/VirtualDisplay.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
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

VirtualDisplay::VirtualDisplay() {
    int ends[2];
    if (pipe(ends) != 0) {
        return;
    }
    mServer = std::make_unique<Program>(
        std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", "1280x800x24",
                                 "-nolisten", "tcp", "-noreset"},
        std::map<std::string, std::string>{});
    close(ends[1]);
    // The server writes its number and a new line when it is ready, and nothing if it fails.
    std::string number;
    for (char digit = 0; read(ends[0], &digit, 1) == 1 && digit != '\n';) {
        number += digit;
    }
    close(ends[0]);
    if (!number.empty()) {
        mName = ':' + number;
        // A window may go between two requests about it.
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    }
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
