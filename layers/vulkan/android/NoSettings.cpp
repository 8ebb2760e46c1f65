#include "vulkan/entry/ProgramSettings.h"

namespace vulkan {

/// An application has no profiles of a user.
platform::OwnProperties programSettings() {
    return {};
}

}  // namespace vulkan
