#pragma once

#include <functional>
#include <optional>
#include <string>

namespace control {

/// A property's text by its full name; nothing or an empty text for its default.
using TextLookup = std::function<std::optional<std::string>(const std::string& name)>;

/// Returns what is wrong with the property of this full name when it is a key that, by these texts, does
/// something else too; else an empty text.
std::string keyConflict(const std::string& name, const TextLookup& textOf);

}  // namespace control
