#include "android/PhonePicture.h"

#include "overlays/Pam.h"
#include "software/Image.h"
#include "software/Png.h"

namespace control {

std::string savePhonePicture(const std::string& bytes, const std::string& path) {
    software::Image image;
    std::string error;
    if (!parsePam(bytes, image)) {
        return "the application wrote something other than a picture";
    }
    return software::writePng(image, path, error) ? std::string() : error;
}

}  // namespace control
