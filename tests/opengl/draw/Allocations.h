#pragma once

/// Starts or stops counting what this thread allocates with `new`. Returns how often it did so far; starting
/// begins at 0.
int countAllocations(bool isCounting);
