// A plain program in a window: what it does is told by words such as surface=pixmap frames=100.
//   window=egl|glx  api=es|gl|core  surface=window|pbuffer|single|preserved|pixmap  size=640x480
//   frames=60  pause=0 (milliseconds a frame)  state=none|deleted-program|query|list
// A surface that keeps its picture is cleared once and then swapped again and again; how many of its pixels
// have changed in the end is printed. All others are cleared in every frame.

#include "opengl/context/HeadlessContext.h"

#include <GL/glx.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#define CALL(Type, name) reinterpret_cast<Type>(eglGetProcAddress(#name))

namespace {

using Surface = HeadlessContext::Surface;
using Words = std::map<std::string, std::string>;

const std::map<std::string, Surface> SURFACES = {{"window", Surface::WINDOW},
                                                 {"pbuffer", Surface::PBUFFER},
                                                 {"single", Surface::SINGLE_BUFFERED},
                                                 {"preserved", Surface::PRESERVED},
                                                 {"pixmap", Surface::PIXMAP}};

struct Size {
    int width = 0;
    int height = 0;
};

/// A context of GLX, current; what swaps it. Lives as long as the process.
std::function<void()> openGlx(Surface surface, const Size& size) {
    Display* const display = XOpenDisplay(nullptr);
    const int type = surface == Surface::PBUFFER  ? GLX_PBUFFER_BIT
                     : surface == Surface::PIXMAP ? GLX_PIXMAP_BIT | GLX_WINDOW_BIT
                                                  : GLX_WINDOW_BIT;
    const bool isDouble = surface != Surface::SINGLE_BUFFERED;
    const int wanted[] = {GLX_DRAWABLE_TYPE,
                          type,
                          GLX_DOUBLEBUFFER,
                          isDouble ? True : False,
                          GLX_X_VISUAL_TYPE,
                          GLX_TRUE_COLOR,
                          GLX_RED_SIZE,
                          8,
                          None};
    int count = 0;
    GLXFBConfig* const configs =
        display == nullptr ? nullptr : glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
    if (count == 0 || surface == Surface::PRESERVED) {
        return nullptr;  // GLX knows no window that keeps its picture
    }
    const GLXFBConfig config = configs[0];
    const auto width = static_cast<unsigned int>(size.width);
    const auto height = static_cast<unsigned int>(size.height);
    const Window root = DefaultRootWindow(display);
    XVisualInfo* const visual = glXGetVisualFromFBConfig(display, config);
    GLXDrawable drawable = 0;
    if (surface == Surface::PBUFFER) {
        const int sizes[] = {GLX_PBUFFER_WIDTH, size.width, GLX_PBUFFER_HEIGHT, size.height, None};
        drawable = glXCreatePbuffer(display, config, sizes);
    } else if (surface == Surface::PIXMAP) {
        const Pixmap pixmap =
            XCreatePixmap(display, root, width, height, static_cast<unsigned int>(visual->depth));
        drawable = glXCreatePixmap(display, config, pixmap, nullptr);
    } else {
        XSetWindowAttributes look = {};
        look.colormap = XCreateColormap(display, root, visual->visual, AllocNone);
        drawable = XCreateWindow(display, root, 0, 0, width, height, 0, visual->depth, InputOutput,
                                 visual->visual, CWColormap | CWBorderPixel, &look);
        XMapWindow(display, drawable);
    }
    const GLXContext context = glXCreateNewContext(display, config, GLX_RGBA_TYPE, nullptr, True);
    if (glXMakeContextCurrent(display, drawable, drawable, context) == False) {
        return nullptr;
    }
    return [display, drawable] { glXSwapBuffers(display, drawable); };
}

std::function<void()> openEgl(Surface surface, const Size& size, const std::string& api) {
    HeadlessContext::Options options;
    options.api = api == "es"     ? HeadlessContext::Api::ES
                  : api == "core" ? HeadlessContext::Api::CORE
                                  : HeadlessContext::Api::COMPATIBILITY;
    options.major = api == "core" ? 3 : 2;
    options.minor = api == "core" ? 2 : 0;
    options.surface = surface;
    options.width = size.width;
    options.height = size.height;
    const HeadlessContext* const context = HeadlessContext::create(options).release();
    if (context == nullptr) {
        return nullptr;
    }
    return [context] { context->swap(); };
}

void setState(const std::string& state) {
    if (state == "deleted-program") {
        const GLuint program = CALL(PFNGLCREATEPROGRAMPROC, glCreateProgram)();
        const auto attach = [program](GLenum type, const char* source) {
            const GLuint shader = CALL(PFNGLCREATESHADERPROC, glCreateShader)(type);
            CALL(PFNGLSHADERSOURCEPROC, glShaderSource)(shader, 1, &source, nullptr);
            CALL(PFNGLCOMPILESHADERPROC, glCompileShader)(shader);
            CALL(PFNGLATTACHSHADERPROC, glAttachShader)(program, shader);
        };
        attach(GL_VERTEX_SHADER, "void main() { gl_Position = vec4(0.0); }");
        attach(GL_FRAGMENT_SHADER, "void main() { gl_FragColor = vec4(1.0); }");
        CALL(PFNGLLINKPROGRAMPROC, glLinkProgram)(program);
        CALL(PFNGLUSEPROGRAMPROC, glUseProgram)(program);
        CALL(PFNGLDELETEPROGRAMPROC, glDeleteProgram)(program);
    } else if (state == "query") {
        GLuint query = 0;
        CALL(PFNGLGENQUERIESPROC, glGenQueries)(1, &query);
        CALL(PFNGLBEGINQUERYPROC, glBeginQuery)(GL_SAMPLES_PASSED, query);
    } else if (state == "list") {
        CALL(void (*)(GLuint, GLenum), glNewList)(1, GL_COMPILE);
    }
}

std::size_t countChanged(const Size& size) {
    const auto count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    std::vector<std::uint32_t> pixels(count);
    CALL(PFNGLREADPIXELSPROC, glReadPixels)
    (0, 0, size.width, size.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return static_cast<std::size_t>(std::count_if(
        pixels.begin(), pixels.end(), [](std::uint32_t pixel) { return (pixel & 0xFFFFFFU) != 0xFFFFFFU; }));
}

}  // namespace

int main(int count, char** arguments) {
    Words words = {{"window", "egl"}, {"api", "es"},  {"surface", "window"}, {"size", "640x480"},
                   {"frames", "60"},  {"pause", "0"}, {"state", "none"}};
    for (int i = 1; i < count; ++i) {
        const std::string word = arguments[i];
        const std::size_t middle = word.find('=');
        if (middle == std::string::npos || words.count(word.substr(0, middle)) == 0) {
            std::fprintf(stderr, "not understood: %s\n", word.c_str());
            return 2;
        }
        words[word.substr(0, middle)] = word.substr(middle + 1);
    }
    Size size;
    if (SURFACES.count(words["surface"]) == 0 ||
        std::sscanf(words["size"].c_str(), "%dx%d", &size.width, &size.height) != 2) {
        return 2;
    }
    const Surface surface = SURFACES.at(words["surface"]);
    const std::function<void()> swap =
        words["window"] == "glx" ? openGlx(surface, size) : openEgl(surface, size, words["api"]);
    if (swap == nullptr) {
        std::fprintf(stderr, "no such context or surface\n");
        return 3;
    }
    const auto clear = [] {
        CALL(PFNGLCLEARCOLORPROC, glClearColor)(1, 1, 1, 1);
        CALL(PFNGLCLEARPROC, glClear)(GL_COLOR_BUFFER_BIT);
    };
    clear();
    setState(words["state"]);
    const int frames = std::atoi(words["frames"].c_str());
    const auto pause = static_cast<useconds_t>(std::atoi(words["pause"].c_str())) * 1000;
    for (int frame = 0; frame < frames; ++frame) {
        if (surface == Surface::WINDOW) {
            clear();
        }
        swap();
        usleep(pause);
    }
    if (surface != Surface::WINDOW) {
        std::printf("%zu pixels changed\n", countChanged(size));
    }
    return 0;
}
