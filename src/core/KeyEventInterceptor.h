#pragma once

#include "utils/Export.h"

/// The hardware keys pressed in the last poll. One instance in the process, used on the rendering thread
/// only.
class KORDANIX_EXPORT KeyEventInterceptor {
public:
    static KeyEventInterceptor* getInstance();

    /// Takes the key events that arrived since the previous poll and sets both flags from them.
    void updateState();

    bool mIsCaptureKeyPressed = false;  ///< volume down was pressed: capture data
    bool mIsDumpKeyPressed = false;     ///< volume up was pressed: start or stop a frame dump
};
