#include "drawers/Drawer.h"

namespace drawer {

Drawer::~Drawer() = default;

void Drawer::dump(Ostra::FrameDump& /*frameDump*/) {}

void Drawer::clear() {}

}  // namespace drawer
