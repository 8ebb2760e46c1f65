#include "opengl/entry/PictureFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string_view>
#include <system_error>

namespace opengl {

namespace {

constexpr std::size_t CHANNELS = 4;
constexpr std::uint8_t OPAQUE = 255;

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return true;
}

void turnOver(std::vector<std::uint8_t>& pixels, std::size_t rowSize) {
    for (std::size_t top = 0, bottom = pixels.size(); top + rowSize < bottom; top += rowSize) {
        bottom -= rowSize;
        std::swap_ranges(pixels.begin() + static_cast<std::ptrdiff_t>(top),
                         pixels.begin() + static_cast<std::ptrdiff_t>(top + rowSize),
                         pixels.begin() + static_cast<std::ptrdiff_t>(bottom));
    }
}

}  // namespace

std::string writePicture(const std::string& path, const SurfaceSize& size,
                         std::vector<std::uint8_t>& pixels) {
    turnOver(pixels, static_cast<std::size_t>(size.width) * CHANNELS);
    for (std::size_t i = CHANNELS - 1; i < pixels.size(); i += CHANNELS) {
        pixels[i] = OPAQUE;
    }
    const std::string header = "P7\nWIDTH " + std::to_string(size.width) + "\nHEIGHT " +
                               std::to_string(size.height) +
                               "\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
    const std::string part = path + ".part";
    const int file = open(part.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
    bool isGood = file >= 0;
    isGood = isGood && writeAll(file, header);
    isGood = isGood && writeAll(file, {reinterpret_cast<const char*>(pixels.data()), pixels.size()});
    int error = isGood ? 0 : errno;
    if (file >= 0 && close(file) != 0 && isGood) {
        error = errno;
    }
    if (error == 0 && rename(part.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error == 0) {
        return {};
    }
    unlink(part.c_str());
    unlink(path.c_str());
    return path + ": " + std::generic_category().message(error);
}

}  // namespace opengl
