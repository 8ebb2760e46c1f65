#include "opengl/gl/SavedBindings.h"

#include "opengl/gl/Get.h"

namespace opengl {
namespace {

constexpr GLenum UNIT_NAME = GL_TEXTURE0 + SavedBindings::UNIT;

/// Whether an attribute has a current value of its own; in desktop OpenGL attribute 0 has none.
bool hasCurrentValue(const Functions& gl, GLuint index) {
    return index != 0 || gl.version.isEs;
}

}  // namespace

bool SavedAttributes::read(const Functions& gl) {
    mElementBuffer = getName(gl, GL_ELEMENT_ARRAY_BUFFER_BINDING);
    bool isBindable = isBindableBuffer(gl, mElementBuffer);
    for (GLuint i = 0; i < COUNT; ++i) {
        Attribute& attribute = mAttributes[i];
        gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &attribute.isEnabled);
        gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_SIZE, &attribute.size);
        gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_TYPE, &attribute.type);
        gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_NORMALIZED, &attribute.isNormalized);
        gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_STRIDE, &attribute.stride);
        if (gl.features.integerAttributes) {
            gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_INTEGER, &attribute.isInteger);
        }
        if (gl.features.instancedArrays) {
            gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_DIVISOR, &attribute.divisor);
        }
        if (hasCurrentValue(gl, i)) {
            gl.getVertexAttribfv(i, GL_CURRENT_VERTEX_ATTRIB, attribute.current);
        }
        gl.getVertexAttribPointerv(i, GL_VERTEX_ATTRIB_ARRAY_POINTER, &attribute.pointer);
        GLint buffer = 0;
        gl.getVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, &buffer);
        attribute.buffer = static_cast<GLuint>(buffer);
        isBindable = isBindable && isBindableBuffer(gl, attribute.buffer);
    }
    return isBindable;
}

void SavedAttributes::set(const Functions& gl) const {
    for (GLuint i = 0; i < COUNT; ++i) {
        if (mAttributes[i].divisor != 0) {
            gl.vertexAttribDivisor(i, 0);
        }
    }
}

void SavedAttributes::restore(const Functions& gl) const {
    for (GLuint i = 0; i < COUNT; ++i) {
        const Attribute& attribute = mAttributes[i];
        const auto type = static_cast<GLenum>(attribute.type);
        gl.bindBuffer(GL_ARRAY_BUFFER, attribute.buffer);
        if (attribute.isInteger != GL_FALSE) {
            gl.vertexAttribIPointer(i, attribute.size, type, attribute.stride, attribute.pointer);
        } else {
            gl.vertexAttribPointer(i, attribute.size, type, static_cast<GLboolean>(attribute.isNormalized),
                                   attribute.stride, attribute.pointer);
        }
        if (attribute.divisor != 0) {
            gl.vertexAttribDivisor(i, static_cast<GLuint>(attribute.divisor));
        }
        if (attribute.isEnabled != GL_FALSE) {
            gl.enableVertexAttribArray(i);
        } else {
            gl.disableVertexAttribArray(i);
        }
        // Drawing from an array makes the current value undefined.
        if (hasCurrentValue(gl, i)) {
            gl.vertexAttrib4fv(i, attribute.current);
        }
    }
    gl.bindBuffer(GL_ELEMENT_ARRAY_BUFFER, mElementBuffer);
}

Obstacle SavedBindings::read(const Functions& gl) {
    constexpr Obstacle DELETED_BUFFER = "a buffer that it has bound was deleted";
    mArrayBuffer = getName(gl, GL_ARRAY_BUFFER_BINDING);
    if (!isBindableBuffer(gl, mArrayBuffer)) {
        return DELETED_BUFFER;
    }
    if (gl.features.vertexArrays) {
        mVertexArray = getName(gl, GL_VERTEX_ARRAY_BINDING);
    } else if (!mAttributes.read(gl)) {
        return DELETED_BUFFER;
    }
    mActiveUnit = getName(gl, GL_ACTIVE_TEXTURE);
    if (mActiveUnit != UNIT_NAME) {
        gl.activeTexture(UNIT_NAME);
    }
    mTexture = getName(gl, GL_TEXTURE_BINDING_2D);
    bool isBindable = mTexture == 0 || gl.isTexture(mTexture);
    if (gl.features.samplers) {
        mSampler = getName(gl, GL_SAMPLER_BINDING);
        isBindable = isBindable && (mSampler == 0 || gl.isSampler(mSampler));
    }
    if (isBindable) {
        return nullptr;
    }
    cancel(gl);
    return "a texture or sampler that it has bound was deleted";
}

void SavedBindings::cancel(const Functions& gl) const {
    if (mActiveUnit != UNIT_NAME) {
        gl.activeTexture(mActiveUnit);
    }
}

void SavedBindings::set(const Functions& gl) const {
    if (mSampler != 0) {
        gl.bindSampler(UNIT, 0);
    }
    if (!gl.features.vertexArrays) {
        mAttributes.set(gl);
    }
}

void SavedBindings::restore(const Functions& gl) const {
    gl.bindTexture(GL_TEXTURE_2D, mTexture);
    if (mSampler != 0) {
        gl.bindSampler(UNIT, mSampler);
    }
    cancel(gl);
    if (gl.features.vertexArrays) {
        gl.bindVertexArray(mVertexArray);
    } else {
        mAttributes.restore(gl);
    }
    gl.bindBuffer(GL_ARRAY_BUFFER, mArrayBuffer);
}

}  // namespace opengl
