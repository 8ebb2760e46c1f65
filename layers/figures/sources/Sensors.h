#pragma once

#include "figures/sources/FileTree.h"
#include "figures/sources/Value.h"

#include <optional>
#include <string>
#include <vector>

/// Sensors of the kernel's hwmon and thermal classes, chosen by their kind and never by their number.
namespace sources {

/// Returns the folders "hwmonN" in `folder` whose chip has this name; an empty name matches every chip.
std::vector<std::string> findHwmons(const FileTree& tree, const std::string& folder, const std::string& chip);

/// Returns the number N of the "PREFIX<N>_label" with that label in a hwmon folder; nothing when there is
/// none.
std::optional<int> findLabelled(const FileTree& tree, const std::string& hwmon, const std::string& prefix,
                                const std::string& label);

/// Reads one input, which is in thousandths, as degrees Celsius. An impossible temperature (0 or less, over
/// 150) is MALFORMED.
Value readTemperature(const FileTree& tree, const std::string& path);

/// Returns the processor's temperature: from the die's own sensor (AMD, Intel), else from the zones that ARM
/// boards and firmware name after the processor, else from the firmware's guess.
Value cpuTemperature(const FileTree& tree);

/// Returns the temperature of the hottest thermal zone that is named after the GPU.
Value gpuZoneTemperature(const FileTree& tree);

}  // namespace sources
