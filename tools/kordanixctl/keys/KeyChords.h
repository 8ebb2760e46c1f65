#pragma once

#include "settings/KeyChord.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace control {

enum class KeyAction : std::uint8_t { TOGGLE, PRESET, LOG, PICTURE };

/// Tells from the presses and releases of a keyboard's keys which action they ask for: a key that is pressed
/// while the modifiers of its chord are down, and no others. Keys are numbered as X numbers them.
class KeyChords {
public:
    static constexpr std::size_t KEYS = 256;

    struct Binding {
        KeyAction action = KeyAction::TOGGLE;
        KeyChord chord;
    };

    /// What the key means, as modifierBits() has it; 0 for what is no modifier.
    using ModifierOf = std::array<Modifiers, KEYS>;

    /// Of keys that can mean what is in a chord, such as the one with 1 and ! on it.
    using KeysOf = std::vector<std::bitset<KEYS>>;

    /// Call them at the start, when the keyboard's layout has changed, and when the bindings have. There is a
    /// set of keys for each binding; of several that a press completes the first one counts.
    void setModifiers(const ModifierOf& modifierOf) { mModifierOf = modifierOf; }
    void setBindings(std::vector<Binding> bindings, KeysOf keys);

    /// Returns the action that the press completes. A key that is down already repeats itself, and completes
    /// none. `key` is below KEYS.
    std::optional<KeyAction> onPress(std::size_t key);
    void onRelease(std::size_t key) { mDown.reset(key); }

private:
    ModifierOf mModifierOf = {};
    std::vector<Binding> mBindings;
    KeysOf mKeysOf;
    std::bitset<KEYS> mDown;
};

}  // namespace control
