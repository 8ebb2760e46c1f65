#include "vulkan/entry/ProgramRun.h"

namespace vulkan {

/// An application has neither runs nor a user's profiles.
void beginProgramsRun() {}

}  // namespace vulkan
