#include "doubles/FakeProperties.h"

#include <sys/system_properties.h>

#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>

struct prop_info {
    std::string value;
    std::uint32_t serial = 0;
};

namespace {

struct Area {
    Area() {
        if (const char* const model = std::getenv("KORDANIX_TEST_MODEL")) {
            properties["ro.product.model"] = {model, 2};
        }
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, prop_info> properties;  // which stay where they are
    unsigned lookups = 0;
    unsigned failingWaits = 0;
};

// Never destroyed: the library's watcher thread waits here while the process exits.
Area& area() {
    static Area* const instance = new Area;
    return *instance;
}

using Lock = std::unique_lock<std::mutex>;

}  // namespace

namespace doubles {

void setProperty(const std::string& name, const std::string& value) {
    const Lock lock(area().mutex);
    prop_info& property = area().properties[name];
    property = {value, property.serial + 2};
    area().changed.notify_all();
}

unsigned propertyLookups() {
    const Lock lock(area().mutex);
    return area().lookups;
}

void failPropertyWaits(unsigned count) {
    const Lock lock(area().mutex);
    area().failingWaits = count;
    area().changed.notify_all();
}

}  // namespace doubles

extern "C" {

const prop_info* __system_property_find(const char* name) {
    const Lock lock(area().mutex);
    ++area().lookups;
    const auto found = area().properties.find(name);
    return found == area().properties.end() ? nullptr : &found->second;
}

void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void*, const char*, const char*, std::uint32_t),
                                     void* cookie) {
    Lock lock(area().mutex);
    const prop_info copy = *pi;
    lock.unlock();
    callback(cookie, "", copy.value.c_str(), copy.serial);
}

bool __system_property_wait(const prop_info* pi, std::uint32_t old_serial, std::uint32_t* new_serial_ptr,
                            const struct timespec* /*relative_timeout*/) {
    Lock lock(area().mutex);
    area().changed.wait(lock, [&] { return pi->serial != old_serial || area().failingWaits > 0; });
    if (area().failingWaits > 0) {
        --area().failingWaits;
        return false;
    }
    *new_serial_ptr = pi->serial;
    return true;
}

}  // extern "C"
