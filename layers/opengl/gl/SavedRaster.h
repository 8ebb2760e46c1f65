#pragma once

#include "opengl/gl/Functions.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace opengl {

/// Everything between vertices and blending that is switched on or off, polygon mode and clip origin. Leaves
/// alone what has no effect once its switch is off (depth function, stencil operations, logic operation …).
class SavedRaster {
public:
    explicit SavedRaster(const Functions& gl);

    /// Turns all switches off, fills polygons, y upwards. The default framebuffer must be bound.
    void set(const Functions& gl);

    void restore(const Functions& gl) const;

private:
    static constexpr std::size_t MAX_SWITCHES = 32;

    void add(GLenum name);

    std::array<GLenum, MAX_SWITCHES> mSwitches = {};
    std::size_t mSwitchCount = 0;
    std::size_t mMultisampleFrom = 0;  ///< the switches from here on only matter with several samples a pixel
    std::uint32_t mChanged = 0;        ///< bit i: mSwitches[i] was on
    bool mChangesScissor = false;
    bool mChangesRestart = false;  ///< the client state's primitive restart was on
    std::array<GLint, 2> mPolygonMode = {};
    GLenum mClipOrigin = 0;
    GLenum mClipDepth = 0;
};

}  // namespace opengl
