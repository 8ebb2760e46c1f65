#pragma once

#include "gui/WidgetsSettings.h"

namespace figures {

struct Figure;

/// Returns the switch and colour of a figure that is not a note: the library's, or the ones that the first
/// call creates. Rendering thread.
const gui::WidgetsSettings::Graph& settingsOf(const Figure& figure);

/// Whether the library knows the figure's switch.
bool isOfLibrary(const Figure& figure);

}  // namespace figures
