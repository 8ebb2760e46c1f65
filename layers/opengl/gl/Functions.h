#pragma once

#include "opengl/gl/Constants.h"
#include "opengl/gl/Features.h"
#include "opengl/gl/Version.h"

#include <GL/glcorearb.h>

namespace opengl {

/// The function with which the program looks up OpenGL functions.
using GetProcAddress = void* (*)(const char* name);

/// The functions of one context, and what the context is. Looked up once for each context; plain data
/// afterwards.
struct Functions {
    Version version;
    Features features;
    int maxDrawBuffers = 1;
    int maxClipDistances = 0;

    /// A function is null exactly when its feature is missing (see `FunctionList.inc`).
#define PFNGLPIXELTRANSFERFPROC PixelTransferfFunction
#define PFNGLPIXELTRANSFERIPROC PixelTransferiFunction
#define PFNGLDISABLECLIENTSTATEPROC ClientStateFunction
#define PFNGLENABLECLIENTSTATEPROC ClientStateFunction
#define OPENGL_FUNCTION(feature, TYPE, member) PFNGL##TYPE##PROC member = nullptr;
#define OPENGL_FUNCTION_RENAMED(feature, TYPE, member, oldName) PFNGL##TYPE##PROC member = nullptr;
#include "opengl/gl/FunctionList.inc"
#undef OPENGL_FUNCTION
#undef OPENGL_FUNCTION_RENAMED

    /// Fills in everything for the context that is current on this thread. False when the context is neither
    /// OpenGL nor OpenGL ES from version 2.0 on, or lacks a function that the overlay needs; then call
    /// nothing. Raises no OpenGL error.
    bool load(GetProcAddress getProcAddress);
};

}  // namespace opengl
