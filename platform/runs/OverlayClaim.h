#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

/// Decides which process of a run shows the overlay: the first one that presents a frame, unless the user
/// gave `run` a name.
namespace platform {

/// "open", or the number and the start of the process with the claim. "named" when the user gave `run` a name
/// and no API: the first process of that name writes its API. Missing when the user gave both.
constexpr const char* CLAIM_PROPERTY = "kordanix.run.claim";

/// The name and API that the process with the claim wrote, for a reset after somebody has changed those.
constexpr const char* CLAIM_NAME_PROPERTY = "kordanix.run.proc";
constexpr const char* CLAIM_API_PROPERTY = "kordanix.run.api";

enum class Claim {
    OWN,        ///< this process shows the overlay; its name and API are in the properties, published
    FOREIGN,    ///< another process of the run was first: no frame hook is to be called
    OTHER_API,  ///< another API of this process was first
    BUSY,  ///< somebody is writing properties, or they cannot be written now; ask again at the next frame
    NONE,  ///< not in a run, or the run was told whom to show it in: the properties decide
};

/// Before the first frame hook of a process, and again while it answers BUSY. Takes the properties' write
/// lock without waiting for it, and under it writes "debug.kordanix.proc" (as the library reads this
/// process's name), "debug.kordanix.api" and the claim itself, with this process's number. A process that has
/// become another program keeps its claim, under its new name. A claim whose process has surely ended can be
/// taken over. Also without a run, the first API of a process that asks has the overlay there. Some file
/// operations, of writes that fail one a second; never waits. Any thread, one at a time.
Claim claimOverlay(const std::string& processName, std::int32_t api);

/// The process that has the claim of the run whose folder it is, also when it has ended; nothing while none
/// has. Its number is that of its own namespace.
std::optional<pid_t> overlayClaimant(const std::string& folder);

/// Makes a run's overlay claimable: by the first process of all, or, if `isNamed`, its API by the first one
/// with the name that is set. By `run`, before it starts a program. Returns what went wrong, in plain words.
std::string openOverlayClaim(const std::string& folder, bool isNamed = false);

}  // namespace platform
