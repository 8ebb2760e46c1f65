#include "doubles/FakeProperties.h"

#include <sys/system_properties.h>

#include <condition_variable>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>

struct prop_info {
    std::string name;
    std::string value;
    std::uint32_t serial = 0;
};

namespace {

struct Area {
    std::mutex mutex;
    std::condition_variable written;
    std::map<std::string, std::unique_ptr<prop_info>> properties;
    unsigned lookups = 0;
    unsigned failingWaits = 0;
};

void store(Area& area, const std::string& name, const std::string& value) {
    std::unique_ptr<prop_info>& slot = area.properties[name];
    if (!slot) {
        slot = std::make_unique<prop_info>();
        slot->name = name;
    }
    slot->value = value;
    slot->serial += 2;
}

Area* createArea() {
    auto* const area = new Area;
    const char* const presets = std::getenv("KORDANIX_TEST_PROPERTIES");
    std::istringstream lines(presets == nullptr ? "" : presets);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        store(*area, line.substr(0, equals), line.substr(equals + 1));
    }
    return area;
}

// Never destroyed: the library's watcher thread waits here while the process exits.
Area& area() {
    static Area* const instance = createArea();
    return *instance;
}

}  // namespace

namespace doubles {

void setProperty(const std::string& name, const std::string& value) {
    const std::lock_guard<std::mutex> lock(area().mutex);
    store(area(), name, value);
    area().written.notify_all();
}

unsigned propertyLookups() {
    const std::lock_guard<std::mutex> lock(area().mutex);
    return area().lookups;
}

void failPropertyWaits(unsigned count) {
    const std::lock_guard<std::mutex> lock(area().mutex);
    area().failingWaits = count;
    area().written.notify_all();
}

}  // namespace doubles

extern "C" {

const prop_info* __system_property_find(const char* name) {
    const std::lock_guard<std::mutex> lock(area().mutex);
    ++area().lookups;
    const auto found = area().properties.find(name);
    return found == area().properties.end() ? nullptr : found->second.get();
}

void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void*, const char*, const char*, std::uint32_t),
                                     void* cookie) {
    std::string name;
    std::string value;
    std::uint32_t serial = 0;
    {
        const std::lock_guard<std::mutex> lock(area().mutex);
        name = pi->name;
        value = pi->value;
        serial = pi->serial;
    }
    callback(cookie, name.c_str(), value.c_str(), serial);
}

bool __system_property_wait(const prop_info* pi, std::uint32_t old_serial, std::uint32_t* new_serial_ptr,
                            const struct timespec* /*relative_timeout*/) {
    std::unique_lock<std::mutex> lock(area().mutex);
    area().written.wait(lock, [&] { return pi->serial != old_serial || area().failingWaits > 0; });
    if (area().failingWaits > 0) {
        --area().failingWaits;
        return false;
    }
    *new_serial_ptr = pi->serial;
    return true;
}

}  // extern "C"
