#include "ostra/FigureReport.h"
#include "ostra/OwnKeys.h"
#include "ostra/PerProcess.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessChannel.h"

#include <ostra/Ostra.h>

#include <utility>

namespace Ostra {

using platform::PerProcess;
using platform::ProcessChannel;

void registerAppBecomeBackgroundListener(std::function<void()> listener) {
    PerProcess<ProcessChannel>::get().addListener(std::move(listener));
}

std::vector<KeyEvent> receiveKeyEvents() {
    return PerProcess<ProcessChannel>::get().takeKeys();
}

}  // namespace Ostra

namespace platform {

void pressOwnKey(const Ostra::KeyEvent& key) {
    PerProcess<ProcessChannel>::get().addKey(key);
}

std::optional<std::string> takePictureRequest() {
    ProcessChannel* const channel = PerProcess<ProcessChannel>::find();
    return channel != nullptr ? channel->takePicture() : std::nullopt;
}

FigureReport* figuresToFill() {
    ProcessChannel* const channel = PerProcess<ProcessChannel>::find();
    FigureExchange* const figures = channel == nullptr ? nullptr : channel->figures();
    return figures != nullptr && figures->isAsked() ? &figures->back() : nullptr;
}

void handOutFigures() {
    ProcessChannel* const channel = PerProcess<ProcessChannel>::find();
    FigureExchange* const figures = channel == nullptr ? nullptr : channel->figures();
    if (figures != nullptr) {
        figures->handOut();
    }
}

}  // namespace platform
