#pragma once

#include "opengl/shim/Hooks.h"

namespace opengl {

/// dlsym without the hooks. To be called by a tail call where the caller matters.
using FindSymbol = void* (*)(void* handle, const char* name);
FindSymbol realFindSymbol();

/// What a caller of the exported function would have reached without it: the next function of that name in
/// the program, else in the caller's own library and what that is linked to, else in the libraries that are
/// known for it. Null when there is none. Leaves dlerror() empty unless there is none.
void* resolveExported(Hook hook, const void* caller);

/// What the program is to get in place of the function `real` that it looked up: a wrapper of its own, or
/// `real` itself when there are no slots left.
void* wrap(Hook hook, void* real, LookUp lookUp);

/// Whether the code at `caller` would find nothing with RTLD_NEXT but the exported function, which would not
/// be there without the shim. dlerror() then says so.
bool isMissingAfter(const void* caller, Hook hook);

/// dlsym for a hooked name and a handle that is not RTLD_NEXT.
void* findHooked(Hook hook, void* handle, const void* caller);

/// The hooked twin of a look-up function's answer `found`.
void* wrapLookedUp(const char* name, void* found, LookUp lookUp);

}  // namespace opengl
