#include "Properties.h"

#include "PropertyTable.h"
#include "properties/SystemProperties.h"

#include <sys/system_properties.h>

#include <array>
#include <charconv>
#include <cstdint>

namespace control {

std::optional<std::string> readProperty(const std::string& name) {
    std::array<char, PROP_VALUE_MAX> text{};
    const int length = __system_property_get(name.c_str(), text.data());
    return length > 0 ? std::optional<std::string>(text.data()) : std::nullopt;
}

std::string publish() {
    const std::string name(GENERATION_NAME);
    const std::string last = readProperty(name).value_or(std::string());
    std::uint32_t generation = 0;
    std::from_chars(last.data(), last.data() + last.size(), generation);
    return platform::setProperty(name.c_str(), std::to_string(generation + 1).c_str());
}

}  // namespace control
