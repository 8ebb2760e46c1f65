#pragma once

#include "figures/sources/FileTree.h"
#include "figures/sources/GpuClients.h"

#include <string>

namespace sources {

/// The folders with the files of one GPU; empty when a folder does not exist.
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

/// Finds the files of the device that a process's files name. If they do not say where it is, finds the only
/// device.
GpuDevice locateGpu(const FileTree& tree, const GpuName& name);

/// Finds the only GPU, or the one that showed the machine's first screen.
GpuDevice locateMainGpu(const FileTree& tree);

/// Finds an NVIDIA device with NVIDIA's own driver, by the number of its node.
GpuDevice locateNvidia(const FileTree& tree, int number);

/// Whether the machine has more than one GPU.
bool hasSeveralGpus(const FileTree& tree);

/// Whether the device sleeps, so that reading most of its files would wake it.
bool isAsleep(const FileTree& tree, const GpuDevice& device);

/// Whether the GPU is part of the processor and uses the machine's memory.
bool isApu(const FileTree& tree, const GpuDevice& device);

}  // namespace sources
