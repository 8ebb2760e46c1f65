#include "settings/Properties.h"

#include "properties/SystemProperties.h"
#include "settings/PropertyTable.h"

#include <sys/system_properties.h>

#include <charconv>
#include <cstdint>
#include <utility>

namespace control {

std::optional<std::string> readProperty(const std::string& name) {
    std::string text;
    if (const prop_info* const property = __system_property_find(name.c_str())) {
        __system_property_read_callback(
            property,
            [](void* cookie, const char* /*name*/, const char* value, std::uint32_t /*serial*/) {
                *static_cast<std::string*>(cookie) = value;
            },
            &text);
    }
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::string generationAfter(const std::string& last) {
    std::uint32_t generation = 0;
    std::from_chars(last.data(), last.data() + last.size(), generation);
    return std::to_string(generation + 1);
}

std::string nextGeneration() {
    return generationAfter(readProperty(std::string(GENERATION_NAME)).value_or(std::string()));
}

std::string publish() {
    return platform::setProperty(std::string(GENERATION_NAME).c_str(), nextGeneration().c_str());
}

}  // namespace control
