#pragma once

#include <string>
#include <string_view>

namespace software {
class Image;
}

namespace control {

/// Reads a picture that a layer wrote for somebody who asked (see ostra/PictureRequest.h), any bytes. False,
/// with `image` as it was, when it is not exactly such a picture.
bool parsePam(std::string_view bytes, software::Image& image);

}  // namespace control
