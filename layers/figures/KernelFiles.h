#pragma once

#include "figures/Reading.h"

#include <string_view>

namespace figures {

/// The files behind the figures that the library has no reader for. Every call opens, reads and closes its
/// file; a reading without a value says why.

/// Memory of the whole system from "/proc/meminfo", in bytes.
struct SystemMemory {
    Reading total;
    /// What applications could still get without swapping ("MemAvailable"): pages that only cache files
    /// count as free, because the kernel gives them up on demand.
    Reading available;
    /// The total less what is free and what caches files ("MemFree", "Cached"), as the library counts it.
    Reading used;
};

SystemMemory readSystemMemory();

/// Proportional set size of this process in bytes from "/proc/self/smaps_rollup". The kernel walks all
/// mappings for it, which takes milliseconds in a large process: not for the frame thread.
Reading readProportionalSetSize();

/// GPU memory of this process in bytes, as the driver counts it.
Reading readGpuMemoryTotal();
Reading readGpuMemorySurface();
Reading readGpuMemoryTexture();

/// Processors of the device, whether or not they run at the moment, from
/// "/sys/devices/system/cpu/possible".
Reading readProcessorCount();

/// The number of the line "NAME: NUMBER kB" of a kernel text, in bytes; the first such line counts.
Reading findKilobytes(std::string_view text, std::string_view name);

/// Why a file whose reader gave nothing could not be read.
Reason whyUnreadable(const char* path);

/// The unsigned decimal number that a text begins with, after blanks; empty when it has more than 64 bits.
Reading leadingNumber(std::string_view text);

/// The last number of a kernel's list of ranges, such as 7 of "0-3,6-7".
Reading lastNumberOfRanges(std::string_view text);

}  // namespace figures
