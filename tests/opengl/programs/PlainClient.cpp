// A plain program in a window: what it does is told by words such as surface=pixmap frames=100.
//   window=egl|glx  api=es|gl|core  surface=window|pbuffer|single|preserved|pixmap  size=640x480
//   frames=60  pause=0 (milliseconds a frame)  state=none|query|list
// A surface that keeps its picture is cleared once and then swapped again and again; how many of its pixels
// have changed in the end is printed. All others are cleared in every frame.

#include "opengl/context/HeadlessContext.h"

#include <GL/glx.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
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

using Options = HeadlessContext::Options;

/// A context of GLX, current; what swaps it. Lives as long as the process.
std::function<void()> openGlx(const Options& options) {
    Display* const display = XOpenDisplay(nullptr);
    const bool isPbuffer = options.surface == Surface::PBUFFER;
    const bool isPixmap = options.surface == Surface::PIXMAP;
    const int type = isPbuffer  ? GLX_PBUFFER_BIT
                     : isPixmap ? GLX_PIXMAP_BIT | GLX_WINDOW_BIT
                                : GLX_WINDOW_BIT;
    const int isDouble = options.surface != Surface::SINGLE_BUFFERED ? True : False;
    const int wanted[] = {GLX_DRAWABLE_TYPE, type, GLX_DOUBLEBUFFER, isDouble, GLX_RED_SIZE, 8, None};
    int count = 0;
    GLXFBConfig* const configs =
        display == nullptr ? nullptr : glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
    if (count == 0 || options.surface == Surface::PRESERVED) {
        return nullptr;  // GLX knows no window that keeps its picture
    }
    const int sizes[] = {GLX_PBUFFER_WIDTH, options.width, GLX_PBUFFER_HEIGHT, options.height, None};
    int visual = 0;
    glXGetFBConfigAttrib(display, configs[0], GLX_VISUAL_ID, &visual);
    GLXDrawable drawable = isPbuffer ? glXCreatePbuffer(display, configs[0], sizes)
                                     : HeadlessContext::createDrawable(display, visual, options);
    drawable = isPixmap ? glXCreatePixmap(display, configs[0], drawable, nullptr) : drawable;
    const GLXContext context = glXCreateNewContext(display, configs[0], GLX_RGBA_TYPE, nullptr, True);
    if (glXMakeContextCurrent(display, drawable, drawable, context) == False) {
        return nullptr;
    }
    return [display, drawable] { glXSwapBuffers(display, drawable); };
}

std::function<void()> openEgl(const Options& options) {
    const HeadlessContext* const context = HeadlessContext::create(options).release();
    if (context == nullptr) {
        return nullptr;
    }
    return [context] { context->swap(); };
}

void setState(const std::string& state) {
    if (state == "query") {
        GLuint query = 0;
        CALL(PFNGLGENQUERIESPROC, glGenQueries)(1, &query);
        CALL(PFNGLBEGINQUERYPROC, glBeginQuery)(GL_SAMPLES_PASSED, query);
    } else if (state == "list") {
        CALL(void (*)(GLuint, GLenum), glNewList)(1, GL_COMPILE);
    }
}

std::ptrdiff_t countChanged(const Options& size) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(size.width * size.height));
    CALL(PFNGLREADPIXELSPROC, glReadPixels)
    (0, 0, size.width, size.height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    return std::count_if(pixels.begin(), pixels.end(),
                         [](std::uint32_t pixel) { return (pixel & 0xFFFFFFU) != 0xFFFFFFU; });
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
    const std::string& api = words["api"];
    Options options;
    options.api = api == "es"     ? HeadlessContext::Api::ES
                  : api == "core" ? HeadlessContext::Api::CORE
                                  : HeadlessContext::Api::COMPATIBILITY;
    options.major = api == "core" ? 3 : 2;
    options.minor = api == "core" ? 2 : 0;
    options.surface = SURFACES.at(words["surface"]);
    std::sscanf(words["size"].c_str(), "%dx%d", &options.width, &options.height);
    const std::function<void()> swap = words["window"] == "glx" ? openGlx(options) : openEgl(options);
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
        if (options.surface == Surface::WINDOW) {
            clear();
        }
        swap();
        usleep(pause);
    }
    if (options.surface != Surface::WINDOW) {
        std::printf("%td pixels changed\n", countChanged(options));
    }
    return 0;
}
