#pragma once

#include "entry/SurfaceSize.h"

#include <cstdint>
#include <string>
#include <vector>

namespace entry {

/// Which row of a picture comes first in memory.
enum class RowOrder { TOP_FIRST, BOTTOM_FIRST };

/// Writes a picture as a PAM file in the form of ostra/PictureRequest.h: as `path`.part, renamed to `path` if
/// that is still there. `pixels` are red, green, blue and anything; they come out
/// opaque, as they are shown. Raises no signal. Returns what went wrong; neither file is there then.
std::string writePicture(const std::string& path, const SurfaceSize& size, RowOrder order,
                         std::vector<std::uint8_t>& pixels);

}  // namespace entry
