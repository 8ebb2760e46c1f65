#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace control {

/// What a property's text means to the library.
enum class PropertyType {
    BOOLEAN,
    POSITION,    ///< an anchor of a widget, 0 to 7
    COLOR,       ///< 0xAARRGGBB, the alpha byte is ignored
    OPACITY,     ///< 0 (nothing seen) to 255 (opaque)
    API,         ///< number of a graphics API
    TEXT,        ///< any text
    GENERATION,  ///< any text; only that it is written counts
};

/// One property of the library.
struct Property {
    std::string_view shortName;  ///< without PREFIX
    PropertyType type;
    std::uint32_t defaultValue;  ///< of a switch 0 or 1; texts are empty by default
    std::string_view meaning;
};

inline constexpr std::string_view PREFIX = "debug.kordanix.";

/// Whose writing publishes all others.
inline constexpr std::string_view GENERATION_NAME = "debug.kordanix.settingsgeneration";

/// Every property of the library: the control properties, the settings in the library's own order, and the
/// generation property. Iterable; the rows live as long as the process.
struct PropertyRows {
    const Property* first;
    std::size_t count;

    const Property* begin() const { return first; }
    const Property* end() const { return first + count; }
};
PropertyRows properties();

/// Whether it is one of those that say where and how the overlay runs, rather than what it shows.
bool isControlProperty(const Property& property);

std::string fullName(const Property& property);

/// The default as the library would read it from the property.
std::string defaultText(const Property& property);

/// Finds a property by its short or full name; null when the library has none of that name.
const Property* findProperty(std::string_view name);

/// What to say about a name that findProperty() does not know: "did you mean 'NAME'?" with the property whose
/// name is the most alike, or where to look when none is so much alike that it could be meant.
std::string hintFor(std::string_view name);

/// The full form of a name that need not be one of the library's: a name with a dot is taken as it is.
std::string expandName(std::string_view name);

}  // namespace control
