#pragma once

#include <cstddef>
#include <glm/vec2.hpp>
#include <vector>

namespace drawlist {

/// Appends `count` points, each `step` after the one before, which must be finite. Leaves out those on the
/// line between their neighbours: a graph that does not change is a single segment.
void appendSimplified(const glm::vec2* first, std::size_t count, std::size_t step,
                      std::vector<glm::vec2>& points);

}  // namespace drawlist
