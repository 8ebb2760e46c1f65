#include "entry/OverlayRight.h"

#include "core/StateInfo.h"
#include "runs/OverlayClaim.h"
#include "utils/SystemInfoHelper.h"

namespace entry {

namespace {

/// How long a refusal lasts. The process with the overlay may end, as a game's launcher does.
constexpr std::int64_t REFUSED_MS = 2000;

}  // namespace

Obstacle OverlayRight::ask() {
    switch (platform::claimOverlay(utils::getProcessName(), static_cast<std::int32_t>(mApi))) {
        case platform::Claim::FOREIGN:
            mRefusedUntil.store(nowMs() + REFUSED_MS, std::memory_order_relaxed);
            return "another process of the run was the first to present a frame";
        case platform::Claim::BUSY:
            return "somebody is writing properties";
        case platform::Claim::OTHER_API:
            mRefusedUntil.store(nowMs() + REFUSED_MS, std::memory_order_relaxed);
            return "another graphics API of this process was the first to present a frame";
        case platform::Claim::OWN:
        case platform::Claim::NONE:
            break;
    }
    mIsGranted = true;
    return nullptr;
}

}  // namespace entry
