#pragma once

namespace gles {

/// How the loader gives a layer the functions below it, next to the driver.
using GetNext = void* (*)(void* layer, const char* name);

/// Takes what the loader initialises a layer with. A second call, of a loader whose list has the layer twice,
/// changes nothing.
void setNext(void* layer, GetNext next);

/// Returns the function below the layer; null before setNext(). Ask only for names that the platform knows:
/// the loader of Android 10 mixes others up, and while it is loading layers they make it wait for itself. A
/// function of OpenGL ES that the driver lacks is one that does nothing, never null.
void* findNext(const char* name);

}  // namespace gles
