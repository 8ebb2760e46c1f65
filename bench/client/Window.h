#pragma once

#include <memory>
#include <string>

namespace client {

/// A window to draw in: each API implements it, with a current OpenGL 3.3 core context, or with a Vulkan
/// swapchain whose pictures are cleared. Create and destroy it on the same thread.
class Window {
public:
    /// Ends the program with a message when there is no display or no such context or device.
    Window(int width, int height);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void swap();

    /// Writes the window's content as a PPM picture. False when it cannot be read or written.
    bool writePicture(const std::string& path) const;

private:
    struct Handles;  // Xlib's headers define too many words to include them here
    std::unique_ptr<Handles> mHandles;
    int mWidth;
    int mHeight;
};

}  // namespace client
