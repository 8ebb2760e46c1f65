#include "drawers/MeshDrawer.h"

namespace drawer {

MeshDrawer::~MeshDrawer() = default;

}  // namespace drawer
