#pragma once

#include "utils/PlainNumbers.h"

#include <cstdio>
#include <locale>
#include <sstream>
#include <string>
#include <type_traits>

namespace utils {

// The compiler checks the format in the calling code.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

/// printf-style formatting into a string of any length, the same in every locale. The arguments must match
/// the format and be of types that printf takes. Returns an empty string if the formatting fails.
template <typename... Args>
std::string strFormat(const std::string& format, Args... args) {
    const PlainNumbers plain;
    const int length = std::snprintf(nullptr, 0, format.c_str(), args...);
    if (length <= 0) {
        return {};
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, format.c_str(), args...);
    return text;
}

#pragma GCC diagnostic pop

/// Returns the value as an output stream in the "C" locale writes it, whatever the application has set.
template <typename T>
std::string toString(T value) {
    if constexpr (std::is_unsigned_v<T> && !std::is_same_v<T, bool> && sizeof(T) > 1) {
        return std::to_string(value);  // needs none of the streams, a good part of a C++ library
    } else {
        std::ostringstream stream;
        stream.imbue(std::locale::classic());
        stream << value;
        return stream.str();
    }
}

}  // namespace utils
