#include "entry/PictureFile.h"

#include "io/PlainFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace entry {

namespace {

constexpr std::size_t CHANNELS = 4;
constexpr std::uint8_t OPAQUE = 255;

void flipVertically(std::vector<std::uint8_t>& pixels, std::size_t rowSize) {
    for (std::size_t top = 0, bottom = pixels.size(); top + rowSize < bottom; top += rowSize) {
        bottom -= rowSize;
        std::swap_ranges(pixels.begin() + static_cast<std::ptrdiff_t>(top),
                         pixels.begin() + static_cast<std::ptrdiff_t>(top + rowSize),
                         pixels.begin() + static_cast<std::ptrdiff_t>(bottom));
    }
}

/// Returns 0 or an error number.
int writeNew(const std::string& path, std::string_view header, std::string_view pixels) {
    unlink(path.c_str());  // left by an earlier process with this number
    const int file = platform::openPlainFile(path, O_WRONLY | O_CREAT | O_EXCL);
    if (file < 0) {
        return errno;
    }
    int error = platform::writeAll(file, header);
    error = error == 0 ? platform::writeAll(file, pixels) : error;
    if (close(file) != 0 && error == 0) {
        error = errno;
    }
    return error;
}

}  // namespace

std::string writePicture(const std::string& path, const SurfaceSize& size, RowOrder order,
                         std::vector<std::uint8_t>& pixels) {
    if (order == RowOrder::BOTTOM_FIRST) {
        flipVertically(pixels, static_cast<std::size_t>(size.width) * CHANNELS);
    }
    for (std::size_t i = CHANNELS - 1; i < pixels.size(); i += CHANNELS) {
        pixels[i] = OPAQUE;
    }
    const std::string header = "P7\nWIDTH " + std::to_string(size.width) + "\nHEIGHT " +
                               std::to_string(size.height) +
                               "\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
    const std::string part = path + ".part";
    int error = writeNew(part, header, {reinterpret_cast<const char*>(pixels.data()), pixels.size()});
    const bool isAwaited = access(path.c_str(), F_OK) == 0;
    if (error == 0 && isAwaited && rename(part.c_str(), path.c_str()) == 0) {
        return {};
    }
    error = error == 0 && isAwaited ? errno : error;
    unlink(part.c_str());
    unlink(path.c_str());
    return error == 0 ? std::string() : path + ": " + std::generic_category().message(error);
}

}  // namespace entry
