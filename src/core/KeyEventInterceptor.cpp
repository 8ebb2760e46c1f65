#include "core/KeyEventInterceptor.h"

#include <ostra/Ostra.h>

#include <cstdint>

namespace {

constexpr std::int32_t VOLUME_UP = 24;
constexpr std::int32_t VOLUME_DOWN = 25;
constexpr std::int32_t PRESSED = 1;

KeyEventInterceptor gInterceptor;

}  // namespace

KeyEventInterceptor* KeyEventInterceptor::getInstance() {
    return &gInterceptor;
}

void KeyEventInterceptor::updateState() {
    mIsCaptureKeyPressed = false;
    mIsDumpKeyPressed = false;
    for (const Ostra::KeyEvent& event : Ostra::receiveKeyEvents()) {
        if (event.action != PRESSED) {
            continue;
        }
        mIsDumpKeyPressed = mIsDumpKeyPressed || event.keyCode == VOLUME_UP;
        mIsCaptureKeyPressed = mIsCaptureKeyPressed || event.keyCode == VOLUME_DOWN;
    }
}
