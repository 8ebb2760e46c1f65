// The property file with any bytes, as somebody may have left or edited it.

#include "Check.h"
#include "properties/PropertyFile.h"
#include "properties/PropertyName.h"
#include "properties/SystemProperties.h"
#include "support/TemporaryDirectory.h"

#include <sys/system_properties.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

namespace {

using platform::PropertyList;

bool isSame(const PropertyList& one, const PropertyList& other) {
    bool isSame = one.serial == other.serial && one.properties.size() == other.properties.size();
    for (const auto& [name, property] : one.properties) {
        const auto found = other.properties.find(name);
        isSame = isSame && found != other.properties.end() && found->second.value == property.value &&
                 found->second.serial == property.serial;
    }
    return isSame;
}

/// An accepted list must follow the rules and survive being written and parsed again.
void checkAccepted(const PropertyList& list) {
    FUZZ_CHECK(list.serial != 0 && list.properties.size() <= platform::PROPERTY_COUNT_MAX);
    for (const auto& [name, property] : list.properties) {
        FUZZ_CHECK(platform::propertyNameError(name.c_str()).empty() &&
                   std::strlen(name.c_str()) == name.size());
        FUZZ_CHECK(property.serial != 0 && property.value.size() <= platform::PROPERTY_VALUE_LENGTH_MAX);
        FUZZ_CHECK(property.value.find('\0') == std::string::npos);
    }
    PropertyList again;
    FUZZ_CHECK(platform::parseProperties(platform::formatProperties(list), again).empty());
    FUZZ_CHECK(isSame(list, again));
}

/// This process's readers must see the file's properties, or the earlier ones when the file is refused.
void checkReaders(const PropertyList& list, bool isSound) {
    const auto read = [](const prop_info* pi, void* cookie) {
        __system_property_read_callback(
            pi,
            [](void* expected, const char* name, const char* text, std::uint32_t serial) {
                const auto& properties = static_cast<const PropertyList*>(expected)->properties;
                const auto found = properties.find(name);
                FUZZ_CHECK(found != properties.end() && found->second.value == text &&
                           found->second.serial == serial);
                char value[PROP_VALUE_MAX];
                const int length = __system_property_get(name, value);
                FUZZ_CHECK(length >= 0 && length < PROP_VALUE_MAX &&
                           std::strncmp(value, text, static_cast<std::size_t>(length)) == 0);
            },
            cookie);
        const timespec atOnce = {};
        std::uint32_t serial = 0;
        FUZZ_CHECK(__system_property_wait(pi, 0, &serial, &atOnce) && serial == __system_property_serial(pi));
    };
    FUZZ_CHECK(platform::propertyAreaError().empty() == isSound);
    if (isSound) {
        PropertyList copy = list;
        FUZZ_CHECK(__system_property_foreach(read, &copy) == 0);
        FUZZ_CHECK(__system_property_area_serial() == list.serial);
    } else {
        FUZZ_CHECK(__system_property_find("a") != nullptr);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const support::TemporaryDirectory directory;
    static const bool isSet = (platform::changeRuntimeDirectory(directory.path()), true);
    FUZZ_CHECK(isSet);
    const std::string path = platform::propertyFilePath(directory.path());
    std::filesystem::remove(path);
    FUZZ_CHECK(platform::setProperty("a", "1").empty() && __system_property_find("a") != nullptr);

    const std::string bytes(reinterpret_cast<const char*>(data), size);
    PropertyList list;
    const bool isSound = platform::parseProperties(bytes, list).empty();
    if (isSound) {
        checkAccepted(list);
    }
    const std::string aside = path + ".aside";
    std::ofstream(aside, std::ios::binary) << bytes;
    std::filesystem::rename(aside, path);
    checkReaders(list, isSound);

    const std::string value =
        bytes.substr(0, bytes.find('\0')).substr(0, platform::PROPERTY_VALUE_LENGTH_MAX);
    PropertyList changed = list;
    const bool canBeSet = isSound && platform::setProperty(changed, "b", value).empty();
    const bool wasSet = platform::setProperty("b", value.c_str()).empty();
    FUZZ_CHECK(wasSet == canBeSet);
    if (wasSet) {
        checkReaders(changed, true);
    }
    return 0;
}
