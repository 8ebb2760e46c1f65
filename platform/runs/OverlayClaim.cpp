#include "runs/OverlayClaim.h"

#include "io/ProcessStart.h"
#include "properties/PropertyWriter.h"
#include "properties/RuntimeDirectory.h"

#include <sys/system_properties.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <string_view>

namespace platform {

namespace {

constexpr const char* OPEN = "open";
constexpr const char* NAMED = "named";
/// The process namespace of the number in the claim. A process in another namespace cannot tell whether that
/// process has ended.
constexpr const char* NAMESPACE_PROPERTY = "kordanix.run.namespace";
constexpr const char* NAME_PROPERTY = "debug.kordanix.proc";
constexpr const char* API_PROPERTY = "debug.kordanix.api";
constexpr const char* GENERATION_PROPERTY = "debug.kordanix.settingsgeneration";

struct Claimant {
    pid_t process = 0;
    std::uint64_t start = 0;
};

std::optional<Claimant> parseClaim(std::string_view text) {
    Claimant claimant;
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, claimant.process);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != ' ' || claimant.process <= 0) {
        return std::nullopt;
    }
    const auto second = std::from_chars(first.ptr + 1, end, claimant.start);
    return second.ec == std::errc() && second.ptr == end ? std::optional(claimant) : std::nullopt;
}

std::string ownNamespace() {
    std::array<char, 64> name{};
    const ssize_t size = readlink("/proc/self/ns/pid", name.data(), name.size());
    return size <= 0 ? std::string() : std::string(name.data(), static_cast<std::size_t>(size));
}

/// Returns the number after the one in the text, as every publication does.
std::string nextGeneration(const std::string& text) {
    std::uint32_t generation = 0;
    std::from_chars(text.data(), text.data() + text.size(), generation);
    return std::to_string(generation + 1);
}

/// Decides about the claim in these properties; `own` is this process's claim.
template <typename Properties>
std::optional<Claim> judge(const Properties& properties, const std::string& own) {
    const std::string claim = properties.value(CLAIM_PROPERTY);
    if (claim.empty() || claim == NAMED) {
        return Claim::NONE;
    }
    const auto claimant = parseClaim(claim);
    const bool canBeTaken = claim == OPEN || claim == own ||
                            (claimant && properties.value(NAMESPACE_PROPERTY) == ownNamespace() &&
                             hasSurelyEnded(claimant->process, claimant->start));
    return canBeTaken ? std::nullopt : std::optional(Claim::FOREIGN);
}

/// Reads the properties without the lock.
class PropertiesRead {
public:
    explicit PropertiesRead(const std::string& directory) {
        FileVersion version;
        std::string error;
        readPropertyFile(directory, mList, version, error);
    }

    std::string value(const std::string& name) const {
        const auto found = mList.properties.find(name);
        return found == mList.properties.end() ? std::string() : found->second.value;
    }

private:
    PropertyList mList;
};

/// When to try again after a failed write, for example because of a full disk.
std::atomic<std::chrono::steady_clock::rep> gNextAttempt = 0;

/// The result for a writer that failed.
Claim failed(const PropertyWriter& writer) {
    if (!writer.isBusy()) {
        const auto next = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        gNextAttempt.store(next.time_since_epoch().count(), std::memory_order_relaxed);
    }
    return Claim::BUSY;
}

/// Whether this process is to write its API for a name that the user has set.
template <typename Properties>
bool isNamed(const Properties& properties, const std::string& processName) {
    return properties.value(CLAIM_PROPERTY) == NAMED && properties.value(NAME_PROPERTY) == processName &&
           properties.value(CLAIM_API_PROPERTY).empty();
}

Claim nameApi(const std::string& directory, const std::string& processName, const std::string& api) {
    PropertyWriter writer(directory, std::chrono::milliseconds(0));
    if (!writer.error().empty()) {
        return failed(writer);
    }
    if (!isNamed(writer, processName)) {
        return Claim::NONE;
    }
    writer.set(API_PROPERTY, api);
    writer.set(CLAIM_API_PROPERTY, api);
    writer.set(GENERATION_PROPERTY, nextGeneration(writer.value(GENERATION_PROPERTY)));
    return writer.commit().empty() ? Claim::NONE : failed(writer);
}

bool isTooEarly() {
    return std::chrono::steady_clock::now().time_since_epoch().count() <
           gNextAttempt.load(std::memory_order_relaxed);
}

Claim claimIn(const std::string& directory, const std::string& processName, const std::string& api) {
    const PropertiesRead read(directory);
    const auto start = read.value(CLAIM_PROPERTY).empty() ? std::nullopt : processStart(getpid());
    // If /proc does not show this process, the claim has only its number.
    const std::string own = std::to_string(getpid()) + ' ' + std::to_string(start.value_or(0));
    const auto verdict = judge(read, own);
    if (isNamed(read, processName)) {
        return isTooEarly() ? Claim::BUSY : nameApi(directory, processName, api);
    }
    if (verdict) {
        return *verdict;
    }
    const auto isWritten = [&](const auto& properties) {
        return properties.value(CLAIM_PROPERTY) == own && properties.value(NAME_PROPERTY) == processName &&
               properties.value(API_PROPERTY) == api;
    };
    if (isWritten(read)) {
        return Claim::OWN;
    }
    if (isTooEarly()) {
        return Claim::BUSY;
    }
    PropertyWriter writer(directory, std::chrono::milliseconds(0));
    if (!writer.error().empty()) {
        return failed(writer);
    }
    const auto lastVerdict = judge(writer, own);
    if (lastVerdict) {
        return *lastVerdict;
    }
    writer.set(NAME_PROPERTY, processName);
    writer.set(API_PROPERTY, api);
    writer.set(CLAIM_NAME_PROPERTY, processName);
    writer.set(CLAIM_API_PROPERTY, api);
    writer.set(NAMESPACE_PROPERTY, ownNamespace());
    writer.set(CLAIM_PROPERTY, own);
    writer.set(GENERATION_PROPERTY, nextGeneration(writer.value(GENERATION_PROPERTY)));
    return writer.commit().empty() ? Claim::OWN : failed(writer);
}

/// The API that this process shows its overlay with, above the number of the process: a forked child begins
/// anew. Relaxed order: nothing else hangs on it.
std::atomic<std::uint64_t> gApi = 0;

/// Whether the API is the one of this process, which the first one to ask becomes.
bool takeProcess(std::int32_t api) {
    const auto process = static_cast<std::uint32_t>(getpid());
    const std::uint64_t wanted = std::uint64_t{static_cast<std::uint32_t>(api)} << 32U | process;
    std::uint64_t current = gApi.load(std::memory_order_relaxed);
    while (static_cast<std::uint32_t>(current) != process) {
        if (gApi.compare_exchange_weak(current, wanted, std::memory_order_relaxed)) {
            return true;
        }
    }
    return current == wanted;
}

}  // namespace

Claim claimOverlay(const std::string& processName, std::int32_t api) {
    if (!takeProcess(api)) {
        return Claim::OTHER_API;
    }
    const int callersErrno = errno;
    std::string error;
    const std::string* const directory = ownRuntimeDirectory(error);
    const Claim claim =
        directory == nullptr ? Claim::NONE : claimIn(*directory, processName, std::to_string(api));
    errno = callersErrno;
    return claim;
}

std::optional<pid_t> overlayClaimant(const std::string& folder) {
    const auto claimant = parseClaim(PropertiesRead(folder).value(CLAIM_PROPERTY));
    return claimant ? std::optional(claimant->process) : std::nullopt;
}

std::string openOverlayClaim(const std::string& folder, bool isNamed) {
    PropertyWriter writer(folder);
    writer.set(CLAIM_PROPERTY, isNamed ? NAMED : OPEN);
    return writer.commit();
}

}  // namespace platform
