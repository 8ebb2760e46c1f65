#pragma once

#include "opengl/gl/Functions.h"

#include <cstdint>

/// Checks around GPU time stamps, so that the program does not notice them. Use them only with
/// Features::timerQueries.
namespace opengl {

/// Time stamps count modulo this + 1; 0 when there are none.
std::uint64_t timeStampMask(const Functions& gl);

/// Whether a time stamp can be put now. Not while the program compiles a display list, which might include
/// it.
bool canPutTimeStamp(const Functions& gl);

/// Whether a result can be read now. Not while the program has a query buffer bound, which would get the
/// result.
bool canReadTimeStamp(const Functions& gl);

/// Whether time stamps since the last call are unreliable. Clears OpenGL ES's flag for the program too.
bool wasDisjoint(const Functions& gl);

}  // namespace opengl
