#pragma once

#include "opengl/shim/Hooks.h"

namespace opengl {

/// dlsym without the hooks. Use a tail call where the caller matters.
using FindSymbol = void* (*)(void* handle, const char* name);
FindSymbol realFindSymbol();

/// Returns what a caller of the exported function would have reached without it: the next function of that
/// name in the program, else in the caller's own library and its dependencies, else in the libraries known to
/// have it. Null when there is none; only then dlerror() has an error.
void* resolveExported(Hook hook, const void* caller);

/// Returns what the program gets when it looks up the function `real`: a wrapper, or `real` itself when there
/// are no slots left.
void* wrap(Hook hook, void* real, LookUp lookUp);

/// Whether the code at `caller` would find only our exported function with RTLD_NEXT. Without the shim it
/// would find nothing, and dlerror() says so.
bool isMissingAfter(const void* caller, Hook hook);

/// dlsym for a hooked name and a handle that is not RTLD_NEXT.
void* findHooked(Hook hook, void* handle, const void* caller);

/// Returns the wrapper for `found`, which a look-up function has returned.
void* wrapLookedUp(const char* name, void* found, LookUp lookUp);

}  // namespace opengl
