#pragma once

#include <bitset>

namespace scene {

/// By gui::WidgetType.
using WidgetSet = std::bitset<8>;

/// Of the widgets as the layout manager has placed them: those that lie outside the surface, or on a widget
/// that matters more. The surface has no room for them. Rendering thread.
WidgetSet widgetsWithoutRoom();

}  // namespace scene
