#include "OverlayState.h"

#include "Properties.h"
#include "PropertyTable.h"
#include "ValueText.h"

namespace control {

std::string displayedValue(std::string_view shortName) {
    const Property* const property = findProperty(shortName);
    return toDisplayText(*property, readProperty(fullName(*property)));
}

std::string overlayObstacle(const std::string& processName) {
    const std::string wanted = displayedValue("proc");
    if (processName != wanted) {
        return "does not show the overlay, which is for '" + wanted + "'";
    }
    return displayedValue("status") == "true" ? std::string()
                                              : "does not show the overlay, which is switched off";
}

}  // namespace control
