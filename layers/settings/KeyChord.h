#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

/// A key with the modifiers that are held down, such as "Shift_R+F12", by X's names for them.
namespace control {

/// Two bits for each kind of modifier.
using Modifiers = std::uint16_t;

struct KeyChord {
    Modifiers modifiers = 0;  ///< those that may be down; of each kind with a bit here at least one is
    std::uint32_t key = 0;    ///< X's number of a key, 0 for none
};

/// The bit of a modifier by X's name, such as "Shift_R"; both bits of "Shift"; 0 for anything else.
Modifiers modifierBits(std::string_view name);

/// Whether exactly these modifiers are what the chord asks for.
bool areHeld(const KeyChord& chord, Modifiers down);

/// Whether one press could mean both.
bool collide(const KeyChord& one, const KeyChord& other);

/// What is typed for a key: its name, with modifiers and '+' before it; "none" for no key. "right Shift" is
/// Shift_R, and "Shift" either of both.
struct TypedChord {
    KeyChord chord;
    std::string text;   ///< by X's names, without blanks
    std::string error;  ///< what is wrong with it, as the end of a sentence; empty when nothing is
};
TypedChord readChord(std::string_view typed);

}  // namespace control
