#pragma once

#include "software/Image.h"
#include "support/ChildProcess.h"

#include <optional>
#include <string>

/// An X server without a screen.
class VirtualDisplay {
public:
    /// The one of this process, started by the first call, and $DISPLAY from then on.
    static VirtualDisplay& get();

    /// Empty when the server could not be started.
    const std::string& name() const { return mName; }

    /// What the largest window shows, once three looks in a row found more than one colour in it and, if
    /// `isStill`, the same picture. Nothing after half a minute.
    std::optional<software::Image> windowPicture(bool isStill) const;

private:
    VirtualDisplay();

    std::string mName;
    support::ChildProcess mServer;
};
