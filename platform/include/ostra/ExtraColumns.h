#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Adds columns to frame dumps, behind those that the library names. Only the host's companion library has
/// these functions; they are weak, so with another companion library they are null.
namespace Ostra {

/// Names the extra columns of the dumps that start from now on. The texts must live as long as the process.
__attribute__((weak)) void setExtraColumns(const std::vector<const char*>& names);

/// Sets the values of the extra columns, in the order of their names, for the frames that are added from now
/// on; a NaN leaves a field empty. Call it on the thread that adds the frames. Allocates nothing.
__attribute__((weak)) void setExtraValues(const double* values, std::size_t count);

/// What the dumps that start from now on are of: a name such as "GPU", and its text, in place of the last one
/// of that name.
__attribute__((weak)) void setDumpSubject(const char* name, const std::string& text);

}  // namespace Ostra
