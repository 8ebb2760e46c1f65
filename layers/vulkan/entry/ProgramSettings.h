#pragma once

#include "runs/OwnRun.h"

namespace vulkan {

/// What the user's profiles say for the program that this process runs. The log names what is wrong in them.
/// Reads some files; not while another thread changes the environment.
platform::OwnProperties programSettings();

}  // namespace vulkan
