#pragma once

#include <glm/vec2.hpp>

#include <vector>

namespace drawlist {

/// Appends the points first..end, which must be finite, but leaves out those on the line between their
/// neighbours: a graph that does not change is a single segment.
void appendSimplified(const glm::vec2* first, const glm::vec2* end, std::vector<glm::vec2>& points);

}  // namespace drawlist
