#include "opengl/draw/Program.h"

#include <array>

#include "opengl/draw/Shaders.h"
#include "opengl/gl/SavedState.h"

namespace opengl {

static_assert(Program::COLOR < SavedState::ATTRIBUTES);

namespace {

/// Texels of the picture's coordinates.
constexpr float PICTURE_TEXELS = 65535.0F;

GLuint compile(const Functions& gl, GLenum stage, const ShaderSource& source, std::string& error) {
    const GLuint shader = gl.createShader(stage);
    gl.shaderSource(shader, ShaderSource::COUNT, source.mTexts, nullptr);
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

std::string Program::create(const Functions& gl, bool isLinear) {
    std::string error;
    const GLuint vertex = compile(gl, GL_VERTEX_SHADER, vertexShader(gl), error);
    const GLuint fragment =
        vertex != 0 ? compile(gl, GL_FRAGMENT_SHADER, fragmentShader(gl, isLinear), error) : 0;
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
    mToClip = gl.getUniformLocation(mName, "toClip");
    mSource = gl.getUniformLocation(mName, "source");
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

void Program::use(const Functions& gl, const glm::uvec2& surface, int side) {
    gl.useProgram(mName);
    if (mSurface != surface) {
        gl.uniform4f(mToClip, 2.0F / static_cast<float>(surface.x), -2.0F / static_cast<float>(surface.y),
                     -1.0F, 1.0F);
        mSurface = surface;
    }
    if (mSide != side) {
        setGlyphs(gl, side);
        mSide = side;
    }
}

void Program::beginPicture(const Functions& gl, const glm::vec2& step) const {
    gl.uniform4f(mSource, 1.0F / PICTURE_TEXELS, 1.0F / PICTURE_TEXELS, step.x, step.y);
}

void Program::setGlyphs(const Functions& gl, int side) const {
    const float scale = 1.0F / static_cast<float>(side);
    gl.uniform4f(mSource, scale, scale, 0.0F, 0.0F);
}

}  // namespace opengl
