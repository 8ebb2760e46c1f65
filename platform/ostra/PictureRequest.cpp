#include "ostra/PictureRequest.h"

namespace platform {

std::string picturePath(const std::string& directory, pid_t process) {
    return directory + "/picture." + std::to_string(process) + ".pam";
}

}  // namespace platform
