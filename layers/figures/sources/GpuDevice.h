#pragma once

#include <string>

#include "figures/sources/FileTree.h"
#include "figures/sources/GpuClients.h"

namespace sources {

/// Where the files of one GPU are. Folders that are not there are empty.
struct GpuDevice {
    std::string driver;     ///< "amdgpu", ..., "nvidia"; empty when it is not known
    std::string folder;     ///< the device's own, on its bus
    std::string card;       ///< its card's, /sys/class/drm/cardN
    std::string devfreq;    ///< of its clock, where the kernel's devfreq sets that
    std::string hwmon;      ///< of its sensors
    std::string pciDevice;  ///< "0000:03:00.0"

    bool isKnown() const { return !folder.empty() || !card.empty() || !driver.empty() || !devfreq.empty(); }

    /// For people: "amdgpu 0000:03:00.0".
    std::string name() const;
};

/// The files of the device that a process's files name; where they say nothing of where it is, those of the
/// only device there is.
GpuDevice locateGpu(const FileTree& tree, const GpuName& name);

/// Without a process: the only GPU, or the one that the machine started its screen with.
GpuDevice locateMainGpu(const FileTree& tree);

/// An NVIDIA device whose driver is its maker's own, by the number of its node.
GpuDevice locateNvidia(const FileTree& tree, int number);

/// Whether the machine has more than one GPU.
bool hasSeveralGpus(const FileTree& tree);

/// Whether the device sleeps, so that reading most of its files would wake it.
bool isAsleep(const FileTree& tree, const GpuDevice& device);

/// A GPU within the processor, which works in the machine's memory.
bool isApu(const FileTree& tree, const GpuDevice& device);

}  // namespace sources
