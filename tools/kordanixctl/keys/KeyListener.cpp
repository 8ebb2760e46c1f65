#include "keys/KeyListener.h"

#include "keys/FocusedProcess.h"
#include "keys/XFunctions.h"

#include <X11/keysym.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <utility>

namespace control {

namespace {

constexpr struct {
    KeySym symbol;
    const char* name;
} MODIFIERS[] = {
    {XK_Shift_L, "Shift_L"},
    {XK_Shift_R, "Shift_R"},
    {XK_Control_L, "Control_L"},
    {XK_Control_R, "Control_R"},
    {XK_Alt_L, "Alt_L"},
    {XK_Alt_R, "Alt_R"},
    {XK_Super_L, "Super_L"},
    {XK_Super_R, "Super_R"},
    {XK_Meta_L, "Meta_L"},
    {XK_Meta_R, "Meta_R"},
    {XK_Hyper_L, "Hyper_L"},
    {XK_Hyper_R, "Hyper_R"},
    {XK_ISO_Level3_Shift, "ISO_Level3_Shift"},
};

Modifiers modifierOf(KeySym symbol) {
    const auto* const found = std::find_if(std::begin(MODIFIERS), std::end(MODIFIERS),
                                           [&](const auto& each) { return each.symbol == symbol; });
    return found == std::end(MODIFIERS) ? Modifiers(0) : modifierBits(found->name);
}

class KeyListener {
public:
    explicit KeyListener(const KeyTarget& target) : mTarget(target) {}

    /// Returns why there will be no events; empty when there will.
    std::string open() {
        if (!mX.load()) {
            return "libX11.so.6 and libXi.so.6 are not installed";
        }
        mDisplay = mX.openDisplay(nullptr);
        if (mDisplay == nullptr) {
            return "no X server answers there";
        }
        // A window may be gone before we ask about it.
        mX.setErrorHandler([](Display* /*display*/, XErrorEvent* /*error*/) { return 0; });
        int ignored = 0;
        int major = 2;
        int minor = 1;  // from this version on, also while a program has grabbed the keyboard
        if (mX.queryExtension(mDisplay, "XInputExtension", &mInput, &ignored, &ignored) == 0 ||
            mX.queryInputVersion(mDisplay, &major, &minor) != Success) {
            return "the X server has no X Input 2";
        }
        std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> wanted = {};
        XISetMask(wanted.data(), XI_RawKeyPress);
        XISetMask(wanted.data(), XI_RawKeyRelease);
        XIEventMask mask = {XIAllMasterDevices, static_cast<int>(wanted.size()), wanted.data()};
        mX.selectInputEvents(mDisplay, DefaultRootWindow(mDisplay), &mask, 1);
        readLayout();
        noteKeysDown();
        return {};
    }

    void takeEvent() {
        XEvent event = {};
        mX.nextEvent(mDisplay, &event);
        if (event.type == MappingNotify) {
            mX.refreshKeyboardMapping(&event.xmapping);
            readLayout();
            return;
        }
        if (event.type != GenericEvent || event.xcookie.extension != mInput ||
            mX.getEventData(mDisplay, &event.xcookie) == False) {
            return;
        }
        const int type = event.xcookie.evtype;
        const auto key = static_cast<std::size_t>(static_cast<XIRawEvent*>(event.xcookie.data)->detail);
        mX.freeEventData(mDisplay, &event.xcookie);
        if (key >= KeyChords::KEYS) {
            return;
        }
        if (type == XI_RawKeyRelease) {
            mChords.onRelease(key);
            return;
        }
        if (mTarget.updateBindings(mBindings)) {
            findKeys();
        }
        const std::optional<KeyAction> action = mChords.onPress(key);
        if (action && isFocusIn(mTarget.isMember, mX, mDisplay)) {
            mTarget.onAction(*action);
        }
    }

private:
    void readLayout() {
        KeyChords::ModifierOf modifiers = {};
        for (std::size_t key = 0; key < modifiers.size(); ++key) {
            modifiers[key] = modifierOf(symbol(key, 0, 0));
        }
        mChords.setModifiers(modifiers);
        findKeys();
    }

    KeySym symbol(std::size_t key, int group, int level) const {
        return mX.keycodeToKeysym(mDisplay, static_cast<KeyCode>(key), group, level);
    }

    /// In all layouts that the keyboard has, and with what stands on the key besides.
    bool canMean(std::size_t key, KeySym wanted) const {
        constexpr int GROUPS = 4;
        constexpr int LEVELS = 4;
        for (int i = 0; i < GROUPS * LEVELS; ++i) {
            if (symbol(key, i / LEVELS, i % LEVELS) == wanted) {
                return true;
            }
        }
        return false;
    }

    /// Finds the bindings' keys on the keyboard.
    void findKeys() {
        KeyChords::KeysOf keys(mBindings.size());
        for (std::size_t i = 0; i < mBindings.size(); ++i) {
            for (std::size_t key = 0; key < KeyChords::KEYS; ++key) {
                keys[i][key] = mBindings[i].chord.key != 0 && canMean(key, mBindings[i].chord.key);
            }
        }
        mChords.setBindings(mBindings, std::move(keys));
    }

    void noteKeysDown() {
        std::array<char, KeyChords::KEYS / 8> bits = {};
        mX.queryKeymap(mDisplay, bits.data());
        for (std::size_t key = 0; key < KeyChords::KEYS; ++key) {
            if ((static_cast<unsigned char>(bits[key / 8]) >> (key % 8) & 1U) != 0) {
                mChords.onPress(key);
            }
        }
    }

    const KeyTarget& mTarget;
    XFunctions mX;
    Display* mDisplay = nullptr;
    int mInput = 0;  ///< the extension's number
    KeyChords mChords;
    std::vector<KeyChords::Binding> mBindings;
};

}  // namespace

std::string keyListenerObstacle() {
    return KeyListener({}).open();
}

void listenForKeys(const KeyTarget& target) {
    KeyListener listener(target);
    if (listener.open().empty()) {
        for (;;) {
            listener.takeEvent();
        }
    }
}

}  // namespace control
