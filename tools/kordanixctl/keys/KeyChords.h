#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace control {

enum class KeyAction : std::uint8_t { TOGGLE, PRESET, LOG, PICTURE };

/// Tells from the presses and releases of a keyboard's keys which action they ask for: a function key while
/// one of the shift keys is down, and no other modifier. Keys are numbered as X numbers them.
class KeyChords {
public:
    /// What a key is for this purpose.
    enum Meaning : std::uint8_t { OTHER, LEFT_SHIFT, RIGHT_SHIFT, MODIFIER, F2, F9, F10, F12 };
    static constexpr std::size_t KEYS = 256;

    /// Call it at the start, and when the keyboard's layout has changed.
    void setMeanings(const std::array<Meaning, KEYS>& meanings) { mMeanings = meanings; }

    /// Returns the action that the press completes. A key that is down already repeats itself, and completes
    /// none. `key` is below KEYS.
    std::optional<KeyAction> onPress(std::size_t key);
    void onRelease(std::size_t key) { mDown.reset(key); }

private:
    bool isDown(Meaning meaning) const;

    std::array<Meaning, KEYS> mMeanings = {};
    std::bitset<KEYS> mDown;
};

}  // namespace control
