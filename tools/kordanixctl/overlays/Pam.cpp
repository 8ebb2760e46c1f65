#include "overlays/Pam.h"

#include "software/Image.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <system_error>

namespace control {

namespace {

bool take(std::string_view& bytes, std::string_view text) {
    const bool isThere = bytes.substr(0, text.size()) == text;
    bytes.remove_prefix(isThere ? text.size() : 0);
    return isThere;
}

bool takeSide(std::string_view& bytes, std::uint32_t& side) {
    const auto result = std::from_chars(bytes.data(), bytes.data() + bytes.size(), side);
    bytes.remove_prefix(static_cast<std::size_t>(result.ptr - bytes.data()));
    return result.ec == std::errc() && side > 0 && side <= software::MAX_IMAGE_SIDE;
}

}  // namespace

bool parsePam(std::string_view bytes, software::Image& image) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    if (!take(bytes, "P7\nWIDTH ") || !takeSide(bytes, width) || !take(bytes, "\nHEIGHT ") ||
        !takeSide(bytes, height) || !take(bytes, "\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n") ||
        bytes.size() != std::uint64_t{width} * height * sizeof(software::Pixel)) {
        return false;
    }
    image.resize(width, height);
    std::memcpy(image.mPixels.data(), bytes.data(), bytes.size());
    return true;
}

}  // namespace control
