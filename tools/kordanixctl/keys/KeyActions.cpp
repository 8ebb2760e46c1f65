#include "keys/KeyActions.h"

#include "logs/LogCommand.h"
#include "overlays/PictureCommand.h"
#include "overlays/ToggleCommand.h"
#include "properties/PresetCommand.h"

#include <sstream>

namespace control {

bool takesTime(KeyAction action) {
    return action == KeyAction::PICTURE || action == KeyAction::LOG;
}

void performKeyAction(KeyAction action, std::ostream& told) {
    constexpr double PICTURE_SECONDS = 2.0;
    std::ostream nowhere(nullptr);
    switch (action) {
        case KeyAction::TOGGLE:
            toggleOverlay(std::nullopt, nowhere, told);
            break;
        case KeyAction::PICTURE: {
            std::ostringstream saved;
            if (savePicture(std::nullopt, {}, PICTURE_SECONDS, saved, told) == SUCCESS) {
                told << "kordanixctl: " << saved.str();
            }
            break;
        }
        case KeyAction::PRESET:
            switchPreset({}, nowhere, told);
            break;
        case KeyAction::LOG:
            // What was in it is told by 'run', of every log.
            controlLog({platform::LogRequest::Kind::TOGGLE}, std::nullopt, nowhere, told);
            break;
    }
}

}  // namespace control
