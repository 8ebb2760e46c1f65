#pragma once

#include <cstddef>

/// Counts the allocations of this thread: the executable's own operator new.
namespace bench {

/// Allocations of the calling thread since it started.
std::size_t allocations();

}  // namespace bench
