#pragma once

namespace gles {

/// Returns what a program is to reach under this name when `real` is the function below the layer: a wrapper,
/// or `real` itself when the name is not wrapped or its wrapper already has another function. Looks nothing
/// up and calls nothing, since the loader holds its locks meanwhile. Any thread.
void* wrap(const char* name, void* real);

}  // namespace gles
