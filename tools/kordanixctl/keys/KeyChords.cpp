#include "keys/KeyChords.h"

#include <utility>

namespace control {

void KeyChords::setBindings(std::vector<Binding> bindings, KeysOf keys) {
    mBindings = std::move(bindings);
    mKeysOf = std::move(keys);
}

std::optional<KeyAction> KeyChords::onPress(std::size_t key) {
    if (mDown[key]) {
        return std::nullopt;
    }
    mDown.set(key);
    unsigned int held = 0;
    for (std::size_t each = 0; each < KEYS; ++each) {
        held |= mDown[each] ? mModifierOf[each] : 0U;
    }
    for (std::size_t i = 0; i < mBindings.size(); ++i) {
        if (mKeysOf[i][key] && areHeld(mBindings[i].chord, static_cast<Modifiers>(held))) {
            return mBindings[i].action;
        }
    }
    return std::nullopt;
}

}  // namespace control
