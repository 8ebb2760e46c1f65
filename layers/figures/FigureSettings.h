#pragma once

#include "gui/WidgetsSettings.h"

#include <string>

namespace figures {

struct Figure;

/// Returns the switch and colour of a figure that is not a note: the library's, or the ones that the first
/// call creates. Rendering thread.
const gui::WidgetsSettings::Graph& settingsOf(const Figure& figure);

/// Whether the property of this name, with the library's prefix, has a text: a user has set it. Looks the
/// property up anew at each publication. Rendering thread; takes a lock.
bool isSetByHand(const std::string& property);

/// Whether the library knows the figure's switch.
bool isOfLibrary(const Figure& figure);

}  // namespace figures
