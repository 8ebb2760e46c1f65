#include "Window.h"

#include "WindowPicture.h"

#include <GL/glx.h>
#include <GL/glxext.h>
#include <X11/Xutil.h>

#include <cstdlib>
#include <iostream>

namespace client {
namespace {

[[noreturn]] void fail(const char* reason) {
    std::cerr << "kordanix-opengl-client: " << reason << '\n';
    std::exit(EXIT_FAILURE);
}

GLXFBConfig chooseConfig(Display* display) {
    constexpr int WANTED[] = {GLX_RENDER_TYPE,
                              GLX_RGBA_BIT,
                              GLX_DRAWABLE_TYPE,
                              GLX_WINDOW_BIT,
                              GLX_DOUBLEBUFFER,
                              True,
                              GLX_RED_SIZE,
                              8,
                              GLX_GREEN_SIZE,
                              8,
                              GLX_BLUE_SIZE,
                              8,
                              GLX_DEPTH_SIZE,
                              24,
                              None};
    int count = 0;
    GLXFBConfig* configs = glXChooseFBConfig(display, DefaultScreen(display), WANTED, &count);
    if (configs == nullptr || count == 0) {
        fail("no configuration with two colour buffers and depth");
    }
    const GLXFBConfig config = configs[0];
    XFree(configs);
    return config;
}

::Window createWindow(Display* display, const XVisualInfo& visual, int width, int height) {
    const ::Window root = RootWindow(display, visual.screen);
    XSetWindowAttributes attributes{};
    attributes.colormap = XCreateColormap(display, root, visual.visual, AllocNone);
    attributes.override_redirect = True;  // there is no window manager to place it
    const auto w = static_cast<unsigned>(width);
    const auto h = static_cast<unsigned>(height);
    const ::Window window = XCreateWindow(display, root, 0, 0, w, h, 0, visual.depth, InputOutput,
                                          visual.visual, CWColormap | CWOverrideRedirect, &attributes);
    XMapRaised(display, window);
    XSync(display, False);
    return window;
}

GLXContext createContext(Display* display, GLXFBConfig config) {
    const auto create = reinterpret_cast<PFNGLXCREATECONTEXTATTRIBSARBPROC>(
        glXGetProcAddressARB(reinterpret_cast<const GLubyte*>("glXCreateContextAttribsARB")));
    constexpr int VERSION[] = {
        GLX_CONTEXT_MAJOR_VERSION_ARB,    3,   GLX_CONTEXT_MINOR_VERSION_ARB, 3, GLX_CONTEXT_PROFILE_MASK_ARB,
        GLX_CONTEXT_CORE_PROFILE_BIT_ARB, None};
    return create == nullptr ? nullptr : create(display, config, nullptr, True, VERSION);
}

}  // namespace

struct Window::Handles {
    Display* display = nullptr;
    ::Window window = 0;
    GLXContext context = nullptr;
};

Window::Window(int width, int height)
    : mHandles(std::make_unique<Handles>()), mWidth(width), mHeight(height) {
    mHandles->display = XOpenDisplay(nullptr);
    if (mHandles->display == nullptr) {
        fail("no display");
    }
    GLXFBConfig config = chooseConfig(mHandles->display);
    XVisualInfo* visual = glXGetVisualFromFBConfig(mHandles->display, config);
    mHandles->window = createWindow(mHandles->display, *visual, width, height);
    XFree(visual);
    mHandles->context = createContext(mHandles->display, config);
    if (mHandles->context == nullptr ||
        !glXMakeCurrent(mHandles->display, mHandles->window, mHandles->context)) {
        fail("no OpenGL 3.3 core context");
    }
}

Window::~Window() {
    glXMakeCurrent(mHandles->display, None, nullptr);
    glXDestroyContext(mHandles->display, mHandles->context);
    XDestroyWindow(mHandles->display, mHandles->window);
    XCloseDisplay(mHandles->display);
}

void Window::swap() {
    glXSwapBuffers(mHandles->display, mHandles->window);
}

bool Window::writePicture(const std::string& path) const {
    glXWaitGL();
    XSync(mHandles->display, False);
    return writeWindowPicture(mHandles->display, mHandles->window, mWidth, mHeight, path);
}

}  // namespace client
