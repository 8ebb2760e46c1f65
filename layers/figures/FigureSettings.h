#pragma once

#include "gui/WidgetsSettings.h"

namespace figures {

struct Figure;

/// Switch and colour of a figure that is no note: the library's own, or made by the first call. Rendering
/// thread.
const gui::WidgetsSettings::Graph& settingsOf(const Figure& figure);

/// Whether the library knows the figure's switch.
bool isOfLibrary(const Figure& figure);

}  // namespace figures
