#pragma once

#include "settings/PropertyTable.h"

#include <optional>
#include <string>
#include <string_view>

/// Between what people write and what the library reads from a property.
namespace control {

/// The text to write into a property of this type for what somebody typed: switches as "true" or "false",
/// everything that is a number in decimal. Nothing when it cannot be meant for such a property.
std::optional<std::string> toPropertyText(PropertyType type, std::string_view typed);

/// What toPropertyText() takes, for an error message: "true or false".
std::string_view expectedText(PropertyType type);

/// What the library makes of a property's text, in people's form (a position's name, a colour as #RRGGBB).
/// Without a text, or with one that it cannot read, that is the default.
std::string toDisplayText(const Property& property, const std::optional<std::string>& text);

/// Whether the library reads the text as what it says, rather than falling back to the default, to 0, or to
/// the part before the first letter.
bool isReadable(const Property& property, const std::string& text);

}  // namespace control
