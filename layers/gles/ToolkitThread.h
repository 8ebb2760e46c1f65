#pragma once

#include "core/SysPropWatcher.h"

namespace gles {

/// Whether this thread is one on which the platform's UI toolkit draws an application's views, and nobody
/// wants the overlay there. The first call of a thread looks at its name. Never throws.
bool isToolkitThread();

/// Whether the overlay is wanted on such threads too (debug.kordanix.renderthread). Made by the first call on
/// one of them, and then kept up to date as the library's own properties are.
const SysProp<bool>& isToolkitIncluded();

}  // namespace gles
