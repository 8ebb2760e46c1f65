#pragma once

namespace opengl {

/// The version of OpenGL that a context implements.
struct Version {
    bool isEs = false;
    bool isCore = false;  ///< desktop only: without what the core profile removed
    int major = 0;
    int minor = 0;

    /// Whether it is at least this version of its kind: 32 stands for 3.2. 0 means "in no version".
    constexpr bool isAtLeast(int desktop, int es) const {
        const int wanted = isEs ? es : desktop;
        return wanted != 0 && 10 * major + minor >= wanted;
    }
};

/// Reads everything but isCore from the text of GL_VERSION. Everything is 0 unless it is OpenGL or OpenGL ES
/// from version 2.0 on.
Version parseVersion(const char* text);

}  // namespace opengl
