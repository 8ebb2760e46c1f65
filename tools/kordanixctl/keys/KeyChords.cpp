#include "keys/KeyChords.h"

#include <algorithm>
#include <iterator>

namespace control {

namespace {

constexpr struct {
    KeyChords::Meaning shift;
    KeyChords::Meaning key;
    KeyAction action;
} CHORDS[] = {
    {KeyChords::RIGHT_SHIFT, KeyChords::F12, KeyAction::TOGGLE},
    {KeyChords::RIGHT_SHIFT, KeyChords::F10, KeyAction::PRESET},
    {KeyChords::LEFT_SHIFT, KeyChords::F2, KeyAction::LOG},
    {KeyChords::RIGHT_SHIFT, KeyChords::F9, KeyAction::PICTURE},
};

}  // namespace

std::optional<KeyAction> KeyChords::onPress(std::size_t key) {
    if (mDown[key]) {
        return std::nullopt;
    }
    mDown.set(key);
    const Meaning shift = isDown(LEFT_SHIFT) ? LEFT_SHIFT : RIGHT_SHIFT;
    const bool isOnlyOne = isDown(LEFT_SHIFT) != isDown(RIGHT_SHIFT) && !isDown(MODIFIER);
    const auto* const chord = std::find_if(std::begin(CHORDS), std::end(CHORDS), [&](const auto& each) {
        return each.shift == shift && each.key == mMeanings[key];
    });
    return isOnlyOne && chord != std::end(CHORDS) ? std::optional(chord->action) : std::nullopt;
}

bool KeyChords::isDown(Meaning meaning) const {
    for (std::size_t key = 0; key < KEYS; ++key) {
        if (mDown[key] && mMeanings[key] == meaning) {
            return true;
        }
    }
    return false;
}

}  // namespace control
