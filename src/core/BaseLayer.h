#pragma once

#include "utils/Export.h"

namespace core {

/// Base of the one object with which a graphics-API layer attaches to an application. Attaching and detaching
/// are idempotent. Not thread-safe: the layer calls everything here on its rendering thread.
class KORDANIX_EXPORT BaseLayer {
public:
    virtual ~BaseLayer();

    /// Called by the layer before it draws; does nothing unless overridden.
    virtual void onPreDraw();

    /// What the layer does when it attaches and detaches; only attach() and detach() call these.
    virtual void onAttach() = 0;
    virtual void onDetach() = 0;

    /// Runs onAttach() unless attached already.
    void attach();

    /// Runs onDetach() if attached.
    void detach();

    bool mIsAttached = false;
};

}  // namespace core
