#pragma once

#include "drawers/Drawer.h"
#include "scene/PrimitiveFactory.h"

#include <memory>
#include <vector>

namespace support {

using Primitives = std::vector<std::unique_ptr<drawer::Drawer>>;

/// Something of everything that a layer draws, in a fixed place.
Primitives makeScene(scene::PrimitiveFactory& factory);

/// The clip cuts glyphs and graphs.
void drawScene(scene::PrimitiveFactory& factory, const Primitives& drawers, bool isClipped);

}  // namespace support
