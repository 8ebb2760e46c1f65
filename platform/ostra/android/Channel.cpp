#include "ostra/FigureReport.h"
#include "ostra/OwnKeys.h"
#include "ostra/PerProcess.h"
#include "ostra/PictureRequest.h"
#include "ostra/android/CommandChannel.h"

#include <ostra/Ostra.h>

#include <functional>

// What the host's Channel.cpp does with sockets.

namespace Ostra {

// Nobody tells a native layer that its application goes to the background, so no listener is ever called.
// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface's
void registerAppBecomeBackgroundListener(std::function<void()> /*listener*/) {
    platform::PerProcess<platform::CommandChannel>::get().listen();
}

std::vector<KeyEvent> receiveKeyEvents() {
    return platform::PerProcess<platform::CommandChannel>::get().takeKeys();
}

}  // namespace Ostra

namespace platform {

void pressOwnKey(const Ostra::KeyEvent& key) {
    PerProcess<CommandChannel>::get().addKey(key);
}

std::optional<std::string> takePictureRequest() {
    CommandChannel* const channel = PerProcess<CommandChannel>::find();
    return channel != nullptr ? channel->takePicture() : std::nullopt;
}

// Nobody watches an application from outside yet.
FigureReport* figuresToFill() {
    return nullptr;
}

void handOutFigures() {}

}  // namespace platform
