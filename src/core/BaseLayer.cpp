#include "core/BaseLayer.h"

namespace core {

BaseLayer::~BaseLayer() = default;

void BaseLayer::onPreDraw() {}

void BaseLayer::attach() {
    if (!mIsAttached) {
        mIsAttached = true;
        onAttach();
    }
}

void BaseLayer::detach() {
    if (mIsAttached) {
        mIsAttached = false;
        onDetach();
    }
}

}  // namespace core
