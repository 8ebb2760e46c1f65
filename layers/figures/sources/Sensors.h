#pragma once

#include <optional>
#include <string>
#include <vector>

#include "figures/sources/FileTree.h"
#include "figures/sources/Value.h"

/// Sensors of the kernel's hwmon and thermal classes, chosen by what they are and never by their number.
namespace sources {

/// The folders "hwmonN" in `folder`, whose chip has this name; any name when it is empty.
std::vector<std::string> findHwmons(const FileTree& tree, const std::string& folder, const std::string& chip);

/// The number N of "PREFIX<N>_label" with that label in a hwmon folder; nothing when there is none.
std::optional<int> findLabelled(const FileTree& tree, const std::string& hwmon, const std::string& prefix,
                                const std::string& label);

/// Degrees Celsius of one input, in thousandths there. What no chip can have (0 and less, over 150) is
/// MALFORMED.
Value readTemperature(const FileTree& tree, const std::string& path);

/// The processor's temperature: the die's own sensor of AMD and Intel first, then the zones that ARM boards
/// and firmware name after the processor, the firmware's guess last.
Value cpuTemperature(const FileTree& tree);

/// The hottest of the thermal zones that are named after the GPU.
Value gpuZoneTemperature(const FileTree& tree);

}  // namespace sources
