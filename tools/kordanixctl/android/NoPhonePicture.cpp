#include "android/PhonePicture.h"

namespace control {

std::string savePhonePicture(const std::string& /*bytes*/, const std::string& /*path*/) {
    return "this kordanixctl was built without libpng, and so writes no pictures";
}

}  // namespace control
