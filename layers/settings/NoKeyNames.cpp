#include "settings/KeyNames.h"

#include <functional>

// In the place of those that need X's headers. Without X no key is heard, and a profile may be another
// machine's.
namespace control {

std::uint32_t keyNumber(std::string_view name) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(name)) | 1U;
}

std::string keyHint(std::string_view /*name*/) {
    return "'xev' shows the keys' names";
}

}  // namespace control
