#pragma once

#include <memory>
#include <string>

namespace client {

/// A window with a Vulkan swapchain whose pictures are cleared. Use it on one thread.
class Window {
public:
    /// Ends the program with a message when there is no display or no such device.
    Window(int width, int height);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Acquires a picture, clears and presents it.
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
