#include "figures/sources/FdInfo.h"

#include "figures/sources/KernelText.h"

#include <limits>

namespace sources {

namespace {

bool takeBeginning(std::string_view& text, std::string_view beginning) {
    if (text.substr(0, beginning.size()) != beginning) {
        return false;
    }
    text.remove_prefix(beginning.size());
    return true;
}

/// Reads a number with its unit as bytes, nanoseconds, hertz or cycles. The kernel chooses a unit for each
/// line.
std::optional<std::uint64_t> toQuantity(std::string_view text) {
    const auto number = takeNumber(text);
    if (!number) {
        return std::nullopt;
    }
    const std::string_view unit = trimmed(text);
    std::uint64_t factor = 1;
    if (unit == "KiB" || unit == "kB") {
        factor = std::uint64_t{1} << 10;
    } else if (unit == "MiB") {
        factor = std::uint64_t{1} << 20;
    } else if (unit == "GiB") {
        factor = std::uint64_t{1} << 30;
    } else if (unit == "KHz") {
        factor = 1000;
    } else if (unit == "MHz") {
        factor = 1000000;
    } else if (!unit.empty() && unit != "ns" && unit != "Hz") {
        return std::nullopt;
    }
    return *number > std::numeric_limits<std::uint64_t>::max() / factor ? std::nullopt
                                                                        : std::optional(*number * factor);
}

void addTo(std::optional<std::uint64_t>& sum, std::uint64_t number) {
    sum = sum.value_or(0) + number;
}

/// Reads a line that begins with "drm-".
void readSharedKey(std::string_view key, std::string_view value, FdInfo& info) {
    if (key == "driver") {
        info.driver = value;
        return;
    }
    if (key == "pdev") {
        info.pciDevice = value;
        return;
    }
    if (key == "client-id") {
        info.client = value;
        return;
    }
    const auto quantity = toQuantity(value);
    if (!quantity) {
        return;
    }
    if (takeBeginning(key, "engine-capacity-")) {
        info.engines[std::string(key)].capacity = *quantity > 0 ? *quantity : 1;
    } else if (takeBeginning(key, "engine-")) {
        // A chip's old and new video blocks share a name.
        addTo(info.engines[std::string(key)].busyNs, *quantity);
    } else if (takeBeginning(key, "cycles-")) {
        addTo(info.engines[std::string(key)].cycles, *quantity);
    } else if (takeBeginning(key, "total-cycles-")) {
        info.engines[std::string(key)].totalCycles = quantity;
    } else if (takeBeginning(key, "maxfreq-")) {
        info.engines[std::string(key)].maxHz = quantity;
    } else if (takeBeginning(key, "curfreq-")) {
        info.engines[std::string(key)].currentHz = quantity;
    } else if (takeBeginning(key, "resident-")) {
        info.regions[std::string(key)].resident = quantity;
    } else if (takeBeginning(key, "memory-")) {
        FdInfo::Region& region = info.regions[std::string(key)];
        region.resident = region.resident ? region.resident : quantity;
    } else if (takeBeginning(key, "total-")) {
        info.regions[std::string(key)].total = quantity;
    }
}

/// Reads a line of a kernel without the shared keys. Ignores its loads, which are averages since the client
/// began.
void readOldKey(std::string_view key, std::string_view value, FdInfo& info) {
    if (key == "pdev") {
        info.pciDevice = value;
    } else if (key == "pasid") {
        info.client = value;
    } else if (key == "vram mem" || key == "gtt mem") {
        info.driver = "amdgpu";
        info.regions[std::string(key.substr(0, key.find(' ')))].resident = toQuantity(value);
    }
}

}  // namespace

std::optional<FdInfo> parseFdInfo(std::string_view text) {
    FdInfo info;
    FdInfo old;
    while (const auto line = takeLine(text)) {
        const std::size_t colon = line->find(':');
        if (colon == std::string_view::npos) {
            continue;
        }
        std::string_view key = line->substr(0, colon);
        const std::string_view value = trimmed(line->substr(colon + 1));
        if (takeBeginning(key, "drm-")) {
            readSharedKey(key, value, info);
        } else {
            readOldKey(key, value, old);
        }
    }
    if (!info.driver.empty()) {
        return info;
    }
    return old.driver.empty() ? std::nullopt : std::optional(old);
}

}  // namespace sources
