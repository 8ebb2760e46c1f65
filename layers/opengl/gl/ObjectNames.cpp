#include "opengl/gl/ObjectNames.h"

#include <atomic>

namespace opengl {
namespace {

/// Not too high: drivers keep tables as long as the largest name.
constexpr GLuint FIRST = 0x1D000;

/// Each name is new, so that contexts which share objects do not collide. Relaxed order is enough.
std::atomic<GLuint> gNext{FIRST};

bool mayChoose(const Functions& gl) {
    return !gl.version.isCore;
}

}  // namespace

GLuint newTexture(const Functions& gl) {
    GLuint name = 0;
    if (!mayChoose(gl)) {
        gl.genTextures(1, &name);
        return name;
    }
    do {
        name = gNext.fetch_add(1, std::memory_order_relaxed);
    } while (gl.isTexture(name));
    return name;
}

GLuint newBuffer(const Functions& gl) {
    GLuint name = 0;
    if (!mayChoose(gl)) {
        gl.genBuffers(1, &name);
        return name;
    }
    do {
        name = gNext.fetch_add(1, std::memory_order_relaxed);
    } while (gl.isBuffer(name));
    return name;
}

GLuint newFramebuffer(const Functions& gl) {
    GLuint name = 0;
    if (!mayChoose(gl)) {
        gl.genFramebuffers(1, &name);
        return name;
    }
    do {
        name = gNext.fetch_add(1, std::memory_order_relaxed);
    } while (gl.isFramebuffer(name));
    return name;
}

}  // namespace opengl
