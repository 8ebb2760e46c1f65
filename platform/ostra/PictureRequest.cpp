#include "ostra/PictureRequest.h"

#include "ostra/KeyChannel.h"
#include "ostra/PerProcess.h"

namespace platform {

std::optional<std::string> takePictureRequest() {
    KeyChannel* const channel = PerProcess<KeyChannel>::find();
    return channel != nullptr ? channel->takePicture() : std::nullopt;
}

}  // namespace platform
