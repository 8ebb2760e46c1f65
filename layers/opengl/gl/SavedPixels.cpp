#include "opengl/gl/SavedPixels.h"

#include "opengl/gl/Get.h"
#include "opengl/gl/SavedTarget.h"

#include <iterator>

namespace opengl {
namespace {

struct Parameter {
    GLenum name;
    GLint wanted;
    bool Features::*feature;
};

// Byte and bit order are not here: they do not affect components of one byte.
const Parameter UNPACKING[] = {
    {GL_UNPACK_ALIGNMENT, 1, &Features::always},
    {GL_UNPACK_ROW_LENGTH, 0, &Features::unpackRows},
    {GL_UNPACK_SKIP_ROWS, 0, &Features::unpackRows},
    {GL_UNPACK_SKIP_PIXELS, 0, &Features::unpackRows},
};

const Parameter PACKING[] = {
    {GL_PACK_ALIGNMENT, 1, &Features::always},    {GL_PACK_ROW_LENGTH, 0, &Features::packRows},
    {GL_PACK_SKIP_ROWS, 0, &Features::packRows},  {GL_PACK_SKIP_PIXELS, 0, &Features::packRows},
    {PACK_INVERT_MESA, 0, &Features::packInvert},
};

// Indices mean nothing here, but a shift of theirs sends Mesa's copies down a path that reads too far.
const GLenum TRANSFER_SWITCHES[] = {MAP_COLOR, INDEX_SHIFT, INDEX_OFFSET};

struct Factor {
    GLenum name;
    GLfloat neutral;
};

const Factor FACTORS[] = {
    {RED_SCALE, 1},  {RED_BIAS, 0},  {GREEN_SCALE, 1}, {GREEN_BIAS, 0},
    {BLUE_SCALE, 1}, {BLUE_BIAS, 0}, {ALPHA_SCALE, 1}, {ALPHA_BIAS, 0},
};

}  // namespace

bool SavedPixelStore::set(const Functions& gl) {
    const bool isUnpack = mDirection == Direction::UNPACK;
    if (gl.features.pixelBuffers) {
        mBuffer = getName(gl, isUnpack ? GL_PIXEL_UNPACK_BUFFER_BINDING : GL_PIXEL_PACK_BUFFER_BINDING);
        if (!isBindableBuffer(gl, mBuffer)) {
            return false;
        }
        if (mBuffer != 0) {
            gl.bindBuffer(isUnpack ? GL_PIXEL_UNPACK_BUFFER : GL_PIXEL_PACK_BUFFER, 0);
        }
    }
    for (std::size_t i = 0; i < (isUnpack ? std::size(UNPACKING) : std::size(PACKING)); ++i) {
        const Parameter& parameter = (isUnpack ? UNPACKING : PACKING)[i];
        mValues[i] = gl.features.*parameter.feature ? getInteger(gl, parameter.name) : parameter.wanted;
        if (mValues[i] != parameter.wanted) {
            gl.pixelStorei(parameter.name, parameter.wanted);
        }
    }
    return true;
}

void SavedPixelStore::restore(const Functions& gl) const {
    const bool isUnpack = mDirection == Direction::UNPACK;
    for (std::size_t i = 0; i < (isUnpack ? std::size(UNPACKING) : std::size(PACKING)); ++i) {
        const Parameter& parameter = (isUnpack ? UNPACKING : PACKING)[i];
        if (mValues[i] != parameter.wanted) {
            gl.pixelStorei(parameter.name, mValues[i]);
        }
    }
    if (mBuffer != 0) {
        gl.bindBuffer(isUnpack ? GL_PIXEL_UNPACK_BUFFER : GL_PIXEL_PACK_BUFFER, mBuffer);
    }
}

void SavedPixelTransfer::set(const Functions& gl) {
    if (!gl.features.compatibility) {
        return;
    }
    for (std::size_t i = 0; i < SWITCH_COUNT; ++i) {
        mSwitches[i] = getInteger(gl, TRANSFER_SWITCHES[i]);
        if (mSwitches[i] != 0) {
            gl.pixelTransferi(TRANSFER_SWITCHES[i], 0);
        }
    }
    for (std::size_t i = 0; i < COUNT; ++i) {
        gl.getFloatv(FACTORS[i].name, &mValues[i]);
        gl.pixelTransferf(FACTORS[i].name, FACTORS[i].neutral);
    }
}

void SavedPixelTransfer::restore(const Functions& gl) const {
    if (!gl.features.compatibility) {
        return;
    }
    for (std::size_t i = 0; i < SWITCH_COUNT; ++i) {
        if (mSwitches[i] != 0) {
            gl.pixelTransferi(TRANSFER_SWITCHES[i], mSwitches[i]);
        }
    }
    for (std::size_t i = 0; i < COUNT; ++i) {
        gl.pixelTransferf(FACTORS[i].name, mValues[i]);
    }
}

bool SavedSource::set(const Functions& gl) {
    mFramebuffer = 0;
    if (gl.features.readFramebuffers) {
        mFramebuffer = getName(gl, GL_READ_FRAMEBUFFER_BINDING);
        if (!isBindableFramebuffer(gl, mFramebuffer)) {
            return false;
        }
        if (mFramebuffer != 0) {
            gl.bindFramebuffer(GL_READ_FRAMEBUFFER, 0);
        }
    }
    mChangesBuffer = false;
    if (gl.features.readBuffer) {
        const GLenum shown = getShownBuffer(gl);
        mBuffer = getName(gl, GL_READ_BUFFER);
        mChangesBuffer = mBuffer != shown;
        if (mChangesBuffer) {
            gl.readBuffer(shown);
        }
    }
    return true;
}

void SavedSource::restore(const Functions& gl) const {
    if (mChangesBuffer) {
        gl.readBuffer(mBuffer);
    }
    if (mFramebuffer != 0) {
        gl.bindFramebuffer(GL_READ_FRAMEBUFFER, mFramebuffer);
    }
}

}  // namespace opengl
