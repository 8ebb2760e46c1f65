#include "ostra/PictureRequest.h"

#include "ostra/PerProcess.h"
#include "ostra/ProcessChannel.h"

namespace platform {

std::string picturePath(const std::string& directory, pid_t process) {
    return directory + "/picture." + std::to_string(process) + ".pam";
}

std::optional<std::string> takePictureRequest() {
    ProcessChannel* const channel = PerProcess<ProcessChannel>::find();
    return channel != nullptr ? channel->takePicture() : std::nullopt;
}

}  // namespace platform
