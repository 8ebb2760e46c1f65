#pragma once

#include <optional>

namespace scene {

/// A figure as its reader gave it, in the unit that the reader documents; empty when it cannot be read.
using Reading = std::optional<double>;

}  // namespace scene
