#pragma once

#include "utils/Export.h"

namespace core {

/// The base of the one object by which a graphics-API layer attaches to an application. Attaching twice, or
/// detaching twice, has no further effect. Not thread-safe: the layer calls everything on its rendering
/// thread.
class KORDANIX_EXPORT BaseLayer {
public:
    virtual ~BaseLayer();

    /// The layer calls this before it draws; does nothing unless overridden.
    virtual void onPreDraw();

    /// What the layer does to attach and to detach. Only attach() and detach() call these.
    virtual void onAttach() = 0;
    virtual void onDetach() = 0;

    /// Calls onAttach() unless the layer is attached.
    void attach();

    /// Calls onDetach() if the layer is attached.
    void detach();

    bool mIsAttached = false;
};

}  // namespace core
