#include "properties/PropertyName.h"

#include <cstring>

namespace platform {

std::string propertyNameError(const char* name) {
    const std::size_t length = name == nullptr ? 0 : strnlen(name, PROPERTY_NAME_LENGTH_MAX + 1);
    if (length == 0) {
        return "the name is empty";
    }
    if (length > PROPERTY_NAME_LENGTH_MAX) {
        return "the name has more than " + std::to_string(PROPERTY_NAME_LENGTH_MAX) + " bytes";
    }
    if (name[0] == '.' || name[length - 1] == '.') {
        return "the name starts or ends with a dot";
    }
    if (std::strstr(name, "..") != nullptr) {
        return "the name has two dots in a row";
    }
    // Spelled out, because isalnum depends on the locale.
    if (std::strspn(name, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789@:_.-") != length) {
        return "the name has characters other than letters, digits and @ : _ . -";
    }
    return {};
}

bool isReadOnlyName(const char* name) {
    return std::strncmp(name, "ro.", 3) == 0;
}

}  // namespace platform
