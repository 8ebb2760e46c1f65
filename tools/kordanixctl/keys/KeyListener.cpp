#include "keys/KeyListener.h"

#include "keys/FocusedProcess.h"
#include "keys/XFunctions.h"

#include <X11/keysym.h>

#include <array>
#include <cstddef>

namespace control {

namespace {

KeyChords::Meaning meaningOf(KeySym symbol) {
    switch (symbol) {
        case XK_Shift_L:
            return KeyChords::LEFT_SHIFT;
        case XK_Shift_R:
            return KeyChords::RIGHT_SHIFT;
        case XK_Control_L:
        case XK_Control_R:
        case XK_Alt_L:
        case XK_Alt_R:
        case XK_Meta_L:
        case XK_Meta_R:
        case XK_Super_L:
        case XK_Super_R:
        case XK_ISO_Level3_Shift:
            return KeyChords::MODIFIER;
        case XK_F2:
            return KeyChords::F2;
        case XK_F9:
            return KeyChords::F9;
        case XK_F10:
            return KeyChords::F10;
        case XK_F12:
            return KeyChords::F12;
        default:
            return KeyChords::OTHER;
    }
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
        } else if (const std::optional<KeyAction> action = mChords.onPress(key)) {
            if (isFocusIn(mTarget.isMember, mX, mDisplay)) {
                mTarget.onAction(*action);
            }
        }
    }

private:
    void readLayout() {
        std::array<KeyChords::Meaning, KeyChords::KEYS> meanings = {};
        for (std::size_t key = 0; key < meanings.size(); ++key) {
            meanings[key] = meaningOf(mX.keycodeToKeysym(mDisplay, static_cast<KeyCode>(key), 0, 0));
        }
        mChords.setMeanings(meanings);
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
