#pragma once

namespace opengl {

/// Which OpenGL a context speaks.
struct Version {
    bool isEs = false;
    bool isCore = false;  ///< desktop only: what the core profile removed is not there
    int major = 0;
    int minor = 0;

    /// Whether it is this version of its kind or a later one: 32 stands for 3.2. 0 means "in no version".
    constexpr bool isAtLeast(int desktop, int es) const {
        const int wanted = isEs ? es : desktop;
        return wanted != 0 && 10 * major + minor >= wanted;
    }
};

/// Reads the text of GL_VERSION; all but isCore. Everything is 0 for anything but OpenGL and OpenGL ES from
/// version 2.0 on.
Version parseVersion(const char* text);

}  // namespace opengl
