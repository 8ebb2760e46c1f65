#include "drawers/RectDrawer.h"

namespace drawer {

RectDrawer::~RectDrawer() = default;

}  // namespace drawer
