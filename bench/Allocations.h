#pragma once

#include <cstddef>

/// Counts the allocations of this thread by replacing the executable's operator new.
namespace bench {

/// The number of allocations since the calling thread started.
std::size_t allocations();

}  // namespace bench
