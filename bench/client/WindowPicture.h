#pragma once

#include <X11/Xlib.h>

#include <string>

namespace client {

/// Writes the window's content as a PPM picture. False when it cannot be read or written.
bool writeWindowPicture(Display* display, ::Window window, int width, int height, const std::string& path);

}  // namespace client
