// Platform functions in the executable, which the linker prefers to those of the libraries. They may be
// called before any static of the executable is constructed.

#include "simulator/ActiveDevice.h"
#include "simulator/DeviceSimulator.h"

#include <dlfcn.h>
#include <sys/system_properties.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

namespace {

/// The function that callers would get without this file.
template <typename Function>
Function* next(Function& /*same*/, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool isKernelFile(const char* path) {
    return std::strncmp(path, "/proc/", 6) == 0 || std::strncmp(path, "/sys/", 5) == 0;
}

bool isReadOnly(const char* mode) {
    return mode[0] == 'r' && std::strchr(mode, '+') == nullptr;
}

/// A stream that owns a copy of the text.
std::FILE* openText(const std::string& text) {
    std::FILE* const stream = fmemopen(nullptr, text.size() + 1, "w+");
    if (stream != nullptr) {
        std::fwrite(text.data(), 1, text.size(), stream);
        std::fflush(stream);
        std::rewind(stream);
    }
    return stream;
}

/// Callers never look into a handle, so a property's handle is the address of its map entry.
using Entry = std::map<std::string, std::string>::value_type;

const Entry* findEntry(const char* name) {
    const simulator::Device* const device = simulator::activeDevice();
    if (device == nullptr) {
        return nullptr;
    }
    const auto found = device->properties().find(name);
    return found != device->properties().end() ? &*found : nullptr;
}

/// The entry behind a handle; null when the handle is not the device's.
const Entry* entryOf(const prop_info* property) {
    if (const simulator::Device* const device = simulator::activeDevice()) {
        for (const Entry& entry : device->properties()) {
            if (reinterpret_cast<const prop_info*>(&entry) == property) {
                return &entry;
            }
        }
    }
    return nullptr;
}

}  // namespace

extern "C" {

std::FILE* fopen(const char* path, const char* mode) {
    if (isKernelFile(path) && isReadOnly(mode)) {
        if (const simulator::Device* const device = simulator::activeDevice()) {
            if (const auto text = device->fileAt(path, simulator::now())) {
                return openText(*text);
            }
        }
    }
    static auto* const real = next(fopen, "fopen");
    return real(path, mode);
}

const prop_info* __system_property_find(const char* name) {
    if (const Entry* const entry = findEntry(name)) {
        return reinterpret_cast<const prop_info*>(entry);
    }
    static auto* const real = next(__system_property_find, "__system_property_find");
    return real(name);
}

void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void* cookie, const char* name, const char* value,
                                                      uint32_t serial),
                                     void* cookie) {
    if (const Entry* const entry = entryOf(pi)) {
        callback(cookie, entry->first.c_str(), entry->second.c_str(), 0);
        return;
    }
    static auto* const real = next(__system_property_read_callback, "__system_property_read_callback");
    real(pi, callback, cookie);
}

uint32_t __system_property_serial(const prop_info* pi) {
    if (entryOf(pi) != nullptr) {
        return 0;
    }
    static auto* const real = next(__system_property_serial, "__system_property_serial");
    return real(pi);
}

bool __system_property_wait(const prop_info* pi, uint32_t old_serial, uint32_t* new_serial_ptr,
                            const struct timespec* relative_timeout) {
    if (entryOf(pi) == nullptr) {
        static auto* const real = next(__system_property_wait, "__system_property_wait");
        return real(pi, old_serial, new_serial_ptr, relative_timeout);
    }
    // A device's property never changes.
    if (relative_timeout != nullptr) {
        nanosleep(relative_timeout, nullptr);
        return false;
    }
    while (true) {
        pause();
    }
}

}  // extern "C"
