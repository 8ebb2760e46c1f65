#include "properties/WatchCommand.h"

#include "settings/PropertyTable.h"
#include "settings/ValueText.h"

#include <sys/system_properties.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <map>
#include <string>
#include <vector>

namespace control {

namespace {

using Clock = std::chrono::steady_clock;

struct Write {
    std::string name;
    std::string text;
};

/// The serial of each property's latest write that we have seen.
using Serials = std::map<std::string, std::uint32_t>;

struct Scan {
    Serials& seen;
    std::vector<Write> writes;
};

void scanProperty(void* cookie, const char* name, const char* value, std::uint32_t serial) {
    auto& scan = *static_cast<Scan*>(cookie);
    if (std::string_view(name).substr(0, PREFIX.size()) != PREFIX) {
        return;
    }
    std::uint32_t& seen = scan.seen[name];
    if (seen != serial) {
        seen = serial;
        scan.writes.push_back({name, value});
    }
}

/// Returns the writes since the last call; a publication comes last, because it follows what it publishes.
std::vector<Write> takeWrites(Serials& seen) {
    Scan scan = {seen, {}};
    __system_property_foreach(
        [](const prop_info* property, void* cookie) {
            __system_property_read_callback(property, scanProperty, cookie);
        },
        &scan);
    std::stable_partition(scan.writes.begin(), scan.writes.end(),
                          [](const Write& write) { return write.name != GENERATION_NAME; });
    return std::move(scan.writes);
}

void print(const Write& write, std::ostream& out) {
    if (write.name == GENERATION_NAME) {
        out << "published (" << write.text << ')' << std::endl;
        return;
    }
    const Property* const property = findProperty(write.name);
    out << write.name.substr(PREFIX.size()) << ' ';
    if (property == nullptr) {
        out << write.text;
    } else if (write.text.empty()) {
        out << toDisplayText(*property, std::nullopt) << " (default)";
    } else {
        out << toDisplayText(*property, write.text);
        if (!isReadable(*property, write.text)) {
            out << " (\"" << write.text << "\" cannot be read)";
        }
    }
    out << std::endl;  // flushed, so that a reader gets each line at once
}

/// Waits for the next write of any property; false when the time is up.
bool waitForWrite(std::uint32_t& serial, const std::optional<Clock::time_point>& end) {
    if (!end) {
        return __system_property_wait(nullptr, serial, &serial, nullptr);
    }
    const auto left = std::max(*end - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    timespec patience = {};
    patience.tv_sec = static_cast<time_t>(seconds.count());
    patience.tv_nsec = static_cast<long>(std::chrono::nanoseconds(left - seconds).count());
    return __system_property_wait(nullptr, serial, &serial, &patience);
}

}  // namespace

ExitCode watchProperties(const WatchOptions& options, std::ostream& out) {
    std::optional<Clock::time_point> end;
    if (options.seconds) {
        // Nobody waits longer than a year, and a year does not overflow.
        constexpr double YEAR = 365.0 * 24.0 * 3600.0;
        const std::chrono::duration<double> time(std::clamp(*options.seconds, 0.0, YEAR));
        end = Clock::now() + std::chrono::duration_cast<Clock::duration>(time);
    }
    std::uint32_t serial = __system_property_area_serial();
    Serials seen;
    takeWrites(seen);
    for (std::uint64_t count = 0; count < options.count && out && waitForWrite(serial, end);) {
        for (const Write& write : takeWrites(seen)) {
            if (count < options.count) {
                print(write, out);
                ++count;
            }
        }
    }
    return SUCCESS;
}

}  // namespace control
