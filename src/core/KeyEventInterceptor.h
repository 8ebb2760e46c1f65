#pragma once

#include "utils/Export.h"

/// The hardware keys pressed in the last poll. The process has one instance, and only the rendering thread
/// uses it.
class KORDANIX_EXPORT KeyEventInterceptor {
public:
    static KeyEventInterceptor* getInstance();

    /// Takes the key events since the previous poll and sets both flags accordingly.
    void updateState();

    bool mIsCaptureKeyPressed = false;  ///< volume down was pressed: capture data
    bool mIsDumpKeyPressed = false;     ///< volume up was pressed: start or stop a frame dump
};
