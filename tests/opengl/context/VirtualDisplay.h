#pragma once

#include "opengl/context/Program.h"
#include "software/Image.h"

#include <memory>
#include <optional>
#include <string>

/// An X server without a screen, for as long as the object lives.
class VirtualDisplay {
public:
    VirtualDisplay();

    /// For $DISPLAY; empty when the server could not be started.
    const std::string& name() const { return mName; }

    /// What the largest window shows, once three looks in a row found more than one colour in it and, if
    /// `isStill`, the same picture. Nothing after half a minute.
    std::optional<software::Image> windowPicture(bool isStill) const;

private:
    std::string mName;
    std::unique_ptr<Program> mServer;
};
