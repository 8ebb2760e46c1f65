#pragma once

// Every function of OpenGL, of whichever version and profile, as an application would look it up.
#ifndef GL_GLEXT_PROTOTYPES
#define GL_GLEXT_PROTOTYPES
#endif

#include "opengl/context/HeadlessContext.h"

// After the core profile's header, which it completes.
#include <GL/gl.h>

/// A function that the context does not have raises GL_INVALID_OPERATION and does nothing.
#define CALL(name)                                                                                         \
    ([] {                                                                                                  \
        static const auto FUNCTION = reinterpret_cast<decltype(&gl##name)>(eglGetProcAddress("gl" #name)); \
        return FUNCTION;                                                                                   \
    }())
