#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "opengl/entry/WindowLibrary.h"

namespace opengl {

/// Writes a picture as a PAM file in the form of ostra/PictureRequest.h: as `path`.part, renamed to `path` if
/// that is still there. `pixels` are red, green, blue and anything, the bottom row first; they come out
/// opaque, as they are shown. Raises no signal. Returns what went wrong; neither file is there then.
std::string writePicture(const std::string& path, const SurfaceSize& size, std::vector<std::uint8_t>& pixels);

}  // namespace opengl
