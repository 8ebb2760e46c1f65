#pragma once

#include "simulator/Device.h"

namespace simulator {

/// The device that is simulated, or null. Constant after the first call; any thread.
const Device* activeDevice();

}  // namespace simulator
