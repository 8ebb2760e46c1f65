#pragma once

#include <memory>
#include <string>

namespace client {

/// A window with a current OpenGL 3.3 core context, made and destroyed on the same thread.
class Window {
public:
    /// Ends the program with a message when there is no display or no such context.
    Window(int width, int height);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void swap();

    /// What the window shows, as a picture in the PPM format. False: it could not be read or written.
    bool writePicture(const std::string& path) const;

private:
    struct Handles;  // Xlib's headers define too many words to be included here
    std::unique_ptr<Handles> mHandles;
    int mWidth;
    int mHeight;
};

}  // namespace client
