#pragma once

#include "simulator/Device.h"

namespace simulator {

/// Returns the simulated device, or null. Never changes after the first call; any thread.
const Device* activeDevice();

}  // namespace simulator
