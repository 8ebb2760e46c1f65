#include "opengl/draw/Program.h"

#include "opengl/gl/SavedState.h"

#include <array>

namespace opengl {

static_assert(Program::COLOR < SavedState::ATTRIBUTES);

namespace {

GLuint compile(const Functions& gl, GLenum stage, const ShaderSource& source, std::string& error) {
    const GLuint shader = gl.createShader(stage);
    gl.shaderSource(shader, ShaderSource::COUNT, source.texts, nullptr);
    gl.compileShader(shader);
    GLint isCompiled = GL_FALSE;
    gl.getShaderiv(shader, GL_COMPILE_STATUS, &isCompiled);
    if (isCompiled == GL_FALSE) {
        std::array<char, 512> log{};
        gl.getShaderInfoLog(shader, static_cast<GLsizei>(log.size()), nullptr, log.data());
        error = std::string("a shader does not compile: ") + log.data();
        gl.deleteShader(shader);
        return 0;
    }
    return shader;
}

}  // namespace

std::string Program::create(const Functions& gl, Shading shading, bool isLinear) {
    std::string error;
    const GLuint vertex = compile(gl, GL_VERTEX_SHADER, vertexShader(gl, shading, isLinear), error);
    const GLuint fragment =
        vertex != 0 ? compile(gl, GL_FRAGMENT_SHADER, fragmentShader(gl, shading, isLinear), error) : 0;
    if (fragment != 0) {
        mName = gl.createProgram();
        gl.attachShader(mName, vertex);
        gl.attachShader(mName, fragment);
        gl.bindAttribLocation(mName, POSITION, "position");
        gl.bindAttribLocation(mName, UV, "uv");
        gl.bindAttribLocation(mName, COLOR, "color");
        gl.linkProgram(mName);
        gl.detachShader(mName, vertex);
        gl.detachShader(mName, fragment);
        gl.deleteShader(fragment);
        GLint isLinked = GL_FALSE;
        gl.getProgramiv(mName, GL_LINK_STATUS, &isLinked);
        if (isLinked == GL_FALSE) {
            std::array<char, 512> log{};
            gl.getProgramInfoLog(mName, static_cast<GLsizei>(log.size()), nullptr, log.data());
            error = std::string("the shaders do not link: ") + log.data();
        }
    }
    if (vertex != 0) {
        gl.deleteShader(vertex);
    }
    if (!error.empty()) {
        destroy(gl);
        return error;
    }
    mToClipLocation = gl.getUniformLocation(mName, "toClip");
    mToTextureLocation = gl.getUniformLocation(mName, "toTexture");
    mGapLocation = gl.getUniformLocation(mName, "gap");
    gl.useProgram(mName);
    gl.uniform1i(gl.getUniformLocation(mName, "image"), SavedState::TEXTURE_UNIT);
    return {};
}

void Program::destroy(const Functions& gl) {
    if (mName != 0) {
        gl.deleteProgram(mName);
    }
    *this = {};
}

void Program::use(const Functions& gl, const glm::vec4& toClip, const glm::vec4& toTexture) {
    gl.useProgram(mName);
    if (mToClip != toClip) {
        gl.uniform4f(mToClipLocation, toClip.x, toClip.y, toClip.z, toClip.w);
        mToClip = toClip;
    }
    if (mToTexture != toTexture) {
        gl.uniform4f(mToTextureLocation, toTexture.x, toTexture.y, toTexture.z, toTexture.w);
        mToTexture = toTexture;
    }
}

void Program::setGap(const Functions& gl, const glm::vec2& gap) const {
    gl.uniform2f(mGapLocation, gap.x, gap.y);
}

}  // namespace opengl
