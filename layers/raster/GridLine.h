#pragma once

#include "raster/Geometry.h"

#include <glm/vec2.hpp>

namespace raster {

/// Turns a horizontal or vertical line into the box that draws it: rounded to a width of whole pixels and
/// moved onto whole pixels inside `frame`, so that a grid is crisp and even. Its ends stay where they are.
/// False for any other line.
bool alignLine(const glm::vec2& from, const glm::vec2& to, float width, const Box& frame, Box& box);

}  // namespace raster
