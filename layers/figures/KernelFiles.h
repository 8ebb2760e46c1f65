#pragma once

#include "figures/Reading.h"

namespace figures {

/// The files behind the figures that the library has no reader for, by way of the library, so that a
/// simulated device is asked where there is one. Every call opens, reads and closes its file; a reading
/// without a value says why.

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

/// Whether the library is served other files than the kernel's own, such as those of a simulated device:
/// then nothing is to be taken from this machine.
bool isServedOtherFiles();

/// Why a file whose reader gave nothing could not be read.
Reason whyUnreadable(const char* path);

}  // namespace figures
