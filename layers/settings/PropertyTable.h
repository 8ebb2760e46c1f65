#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace control {

/// How the library reads a property's text.
enum class PropertyType {
    BOOLEAN,
    POSITION,    ///< where a widget is anchored, 0 to 7
    COLOR,       ///< 0xAARRGGBB, the alpha byte is ignored
    OPACITY,     ///< 0 (invisible) to 255 (opaque)
    API,         ///< number of a graphics API
    SCALE,       ///< 0.5 to 1.8
    KEY,         ///< a key with its modifiers, see KeyChord.h
    TEXT,        ///< any text
    GENERATION,  ///< any text; only the write itself matters
};

/// One property of the library.
struct Property {
    std::string_view shortName;  ///< without PREFIX
    PropertyType type;
    std::uint32_t defaultValue;  ///< 0 or 1 for a switch, a key's place in KEY_NAMES; texts are empty
    std::string_view meaning;
};

inline constexpr std::string_view PREFIX = "debug.kordanix.";

/// Writing this property publishes all others.
inline constexpr std::string_view GENERATION_NAME = "debug.kordanix.settingsgeneration";

/// Whether 'kordanixctl run' listens to keys. This one, and which keys those are (PropertyType::KEY), it
/// reads itself, not the library.
inline constexpr std::string_view KEYS_NAME = "debug.kordanix.keys";

/// The property of what a key does, in the order of control::KeyAction.
inline constexpr std::string_view KEY_NAMES[] = {"key_toggle", "key_preset", "key_log", "key_picture"};

/// Every property of the library: the control properties, the settings in the library's order, and the
/// generation property. Iterable; the rows live as long as the process.
struct PropertyRows {
    const Property* first;
    std::size_t count;

    const Property* begin() const { return first; }
    const Property* end() const { return first + count; }
};
PropertyRows properties();

/// Whether the property says where and how the overlay runs, not what it shows.
bool isControlProperty(const Property& property);

std::string fullName(const Property& property);

/// Returns the default as a text that the library would read.
std::string defaultText(const Property& property);

/// Finds a property by its short or full name; null when the library has no such property.
const Property* findProperty(std::string_view name);

/// Returns advice about a name that findProperty() does not know: "did you mean 'NAME'?" with the most
/// similar name, or where to look when no name is similar enough.
std::string hintFor(std::string_view name);

/// Returns the full form of any name; a name with a dot stays as it is.
std::string expandName(std::string_view name);

}  // namespace control
