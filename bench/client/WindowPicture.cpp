#include "WindowPicture.h"

#include <X11/Xutil.h>

#include <cstddef>
#include <fstream>
#include <vector>

namespace client {

bool writeWindowPicture(Display* display, ::Window window, int width, int height, const std::string& path) {
    const auto w = static_cast<unsigned>(width);
    const auto h = static_cast<unsigned>(height);
    XImage* image = XGetImage(display, window, 0, 0, w, h, AllPlanes, ZPixmap);
    if (image == nullptr) {
        return false;
    }
    std::vector<char> pixels;
    pixels.reserve(static_cast<std::size_t>(w) * h * 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned long pixel = XGetPixel(image, x, y);
            for (const int shift : {16, 8, 0}) {
                pixels.push_back(static_cast<char>((pixel >> shift) & 0xFFu));
            }
        }
    }
    XDestroyImage(image);
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << w << ' ' << h << "\n255\n";
    file.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
    return file.good();
}

}  // namespace client
