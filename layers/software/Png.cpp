#include "software/Png.h"

#include "software/Image.h"

#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

namespace software {

namespace {

constexpr std::size_t MAX_PIXELS = std::size_t{64} * 1024 * 1024;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string systemError() {
    return std::error_code(errno, std::generic_category()).message();
}

bool fail(std::string& error, const char* what, const std::string& path, const std::string& reason) {
    error = std::string("cannot ") + what + " " + path + ": " + reason;
    return false;
}

// libpng's simplified interface returns errors as values and texts, without longjmp.
png_image makePngImage() {
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    return png;
}

png_image makePngImage(const Image& image) {
    png_image png = makePngImage();
    png.width = image.mWidth;
    png.height = image.mHeight;
    png.format = PNG_FORMAT_RGBA;
    return png;
}

bool writeFile(const Image& image, const std::string& path, std::string& reason) {
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) {
        reason = systemError();
        return false;
    }
    png_image png = makePngImage(image);
    if (png_image_write_to_stdio(&png, file.get(), 0, image.mPixels.data(), 0, nullptr) == 0) {
        reason = png.message;
        return false;
    }
    // Writes the C library's buffer, which may fail on a full disk.
    if (std::fclose(file.release()) != 0) {
        reason = systemError();
        return false;
    }
    return true;
}

}  // namespace

bool writePng(const Image& image, const std::string& path, std::string& error) {
    if (image.mPixels.empty()) {
        return fail(error, "write", path, "the picture is empty");
    }
    // A rename would replace even a device.
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        return fail(error, "write", path,
                    S_ISDIR(status.st_mode) ? "it is a directory" : "it is no regular file");
    }
    const std::string temporary = path + "." + std::to_string(getpid()) + ".tmp";
    std::string reason;
    if (writeFile(image, temporary, reason)) {
        if (std::rename(temporary.c_str(), path.c_str()) == 0) {
            return true;
        }
        reason = systemError();
    }
    std::remove(temporary.c_str());
    return fail(error, "write", path, reason);
}

bool encodePng(const Image& image, std::string& bytes, std::string& error) {
    png_image png = makePngImage(image);
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(png);
    bytes.resize(size);
    if (png_image_write_to_memory(&png, bytes.data(), &size, 0, image.mPixels.data(), 0, nullptr) == 0) {
        error = png.message;
        return false;
    }
    bytes.resize(size);
    return true;
}

bool readPng(const std::string& path, Image& image, std::string& error) {
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        return fail(error, "read", path, systemError());
    }
    png_image png = makePngImage();
    if (png_image_begin_read_from_stdio(&png, file.get()) == 0) {
        return fail(error, "read", path, png.message);
    }
    if (png.width > MAX_IMAGE_SIDE || png.height > MAX_IMAGE_SIDE ||
        static_cast<std::size_t>(png.width) * png.height > MAX_PIXELS) {
        png_image_free(&png);
        return fail(error, "read", path, "the picture is too large");
    }
    Image read(png.width, png.height);
    png.format = PNG_FORMAT_RGBA;
    // Frees libpng's memory, whether it succeeds or not.
    if (png_image_finish_read(&png, nullptr, read.mPixels.data(), 0, nullptr) == 0) {
        return fail(error, "read", path, png.message);
    }
    image = std::move(read);
    return true;
}

}  // namespace software
