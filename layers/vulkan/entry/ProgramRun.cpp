#include "vulkan/entry/ProgramRun.h"

#include "runs/OwnRun.h"
#include "utils/Log.h"
#include "utils/Thread.h"
#include "vulkan/entry/ProgramProfiles.h"

#include <chrono>
#include <exception>
#include <thread>

namespace vulkan {

namespace {

/// The program has our descriptors in its hands, so no watch of the kernel's: a look costs it some calls.
constexpr std::chrono::seconds BETWEEN_LOOKS(1);

[[noreturn]] void follow(ProgramProfiles profiles, const std::string& folder) {
    while (true) {
        std::this_thread::sleep_for(BETWEEN_LOOKS);
        try {
            if (profiles.haveChanged()) {
                profiles.update(folder);
            }
        } catch (const std::exception&) {
            // No memory now; the next look is another chance.
        }
    }
}

}  // namespace

void beginProgramsRun() {
    try {
        if (!platform::canBeginOwnRun()) {
            return;
        }
        const ProgramProfiles profiles;
        const std::string folder = platform::beginOwnRun(profiles.texts());
        if (!folder.empty()) {
            utils::startThread("kordanix-conf", [profiles, folder] { follow(profiles, folder); }).detach();
        }
    } catch (const std::exception& error) {
        KORDANIX_LOG_ERROR("a changed profile will have no effect: %s", KORDANIX_LOG_HERE, error.what());
    }
}

}  // namespace vulkan
