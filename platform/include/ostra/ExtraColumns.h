#pragma once

#include <cstddef>
#include <vector>

/// Columns of frame dumps beside those that the library names. Only the host's companion library takes them:
/// the functions are weak, and null with another one.
namespace Ostra {

/// The names of these columns in the dumps that start from now on. The texts live as long as the process.
__attribute__((weak)) void setExtraColumns(const std::vector<const char*>& names);

/// Their values in the frames that are added from now on, in the same order; a NaN leaves a field empty. On
/// the thread that adds the frames. Allocates nothing.
__attribute__((weak)) void setExtraValues(const double* values, std::size_t count);

}  // namespace Ostra
