#pragma once

#include "figures/Reading.h"

namespace scene {

using figures::Reading;

}  // namespace scene
