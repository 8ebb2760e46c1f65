#pragma once

#include "settings/PropertyTable.h"

#include <optional>
#include <string>
#include <string_view>

/// Translates between what people write and what the library reads from a property.
namespace control {

/// Returns the text to write into a property of this type for what somebody typed: switches as "true" or
/// "false", every number in decimal. Nothing when it makes no sense for this type.
std::optional<std::string> toPropertyText(PropertyType type, std::string_view typed);

/// Returns what toPropertyText() accepts, for an error message: "true or false".
std::string_view expectedText(PropertyType type);

/// Returns how the library reads a property's text, in a form for people (a position's name, a colour as
/// #RRGGBB). Without a text, or with one that the library cannot read, that is the default.
std::string toDisplayText(const Property& property, const std::optional<std::string>& text);

/// Whether the library reads the text as written, and does not fall back to the default, to 0, or to the part
/// before the first letter.
bool isReadable(const Property& property, const std::string& text);

}  // namespace control
