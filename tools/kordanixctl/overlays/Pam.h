#pragma once

#include <string>
#include <string_view>

namespace software {
class Image;
}

namespace control {

/// Reads a picture that a layer wrote on request (see ostra/PictureRequest.h); accepts any bytes as input.
/// Returns false and leaves `image` alone when they are not exactly such a picture.
bool parsePam(std::string_view bytes, software::Image& image);

}  // namespace control
