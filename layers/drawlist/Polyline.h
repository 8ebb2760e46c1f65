#pragma once

#include <glm/vec2.hpp>

#include <vector>

namespace drawlist {

/// Appends the points first..end, which are finite, without those that lie on the way between their
/// neighbours: a graph that stands still is a single segment.
void appendSimplified(const glm::vec2* first, const glm::vec2* end, std::vector<glm::vec2>& points);

}  // namespace drawlist
