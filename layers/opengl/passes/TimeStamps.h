#pragma once

#include <cstdint>

#include "opengl/gl/Functions.h"

/// What has to be looked at around GPU time stamps, so that a program does not notice them. Only where
/// Features::timerQueries is.
namespace opengl {

/// What time stamps count modulo, less 1; 0 when there are none.
std::uint64_t timeStampMask(const Functions& gl);

/// Whether a time stamp can be put now: not while a display list is compiled, which it might become a part
/// of.
bool canPutTimeStamp(const Functions& gl);

/// Whether a result can be read now: not with a buffer of the program's bound, into which it would go.
bool canReadTimeStamp(const Functions& gl);

/// Whether time stamps since the last call are not to be trusted. Clears OpenGL ES's flag for the program
/// too.
bool wasDisjoint(const Functions& gl);

}  // namespace opengl
