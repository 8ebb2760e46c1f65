#include "runs/OverlayClaim.h"
#include "runs/OverlayNote.h"

// Nobody starts an Android application by 'run': the properties alone say which process shows the overlay.
namespace platform {

Claim claimOverlay(const std::string& /*processName*/, std::int32_t /*api*/) {
    return Claim::NONE;
}

void writeOverlayNote(const OverlayNote& /*note*/) {}

}  // namespace platform
