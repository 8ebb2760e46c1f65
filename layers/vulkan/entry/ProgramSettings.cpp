#include "vulkan/entry/ProgramSettings.h"

#include "settings/ProfileFiles.h"
#include "settings/ProgramNames.h"
#include "utils/Log.h"

namespace vulkan {

platform::OwnProperties programSettings() {
    const control::ProgramProfiles profiles = control::readProfiles(control::processNames("/proc/self"));
    for (const std::string& error : control::firstErrors(profiles)) {
        KORDANIX_LOG_ERROR("%s", KORDANIX_LOG_HERE, error.c_str());
    }
    platform::OwnProperties properties;
    for (const control::Assignment& assignment : profiles.assignments) {
        properties.emplace_back(assignment.name, assignment.text);
    }
    return properties;
}

}  // namespace vulkan
