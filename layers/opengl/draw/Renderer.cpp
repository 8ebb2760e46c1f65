#include "opengl/draw/Renderer.h"

#include <algorithm>
#include <array>

#include "opengl/draw/DrawTarget.h"
#include "opengl/draw/Shaders.h"
#include "opengl/gl/SavedState.h"

namespace opengl {

namespace {

constexpr GLuint PLACE = 0;
constexpr GLuint TEXEL = 1;
constexpr GLuint INK = 2;
static_assert(INK < SavedState::ATTRIBUTES);

/// The buffer grows by multiples of this.
constexpr std::size_t BUFFER_STEP = 16384;

/// Texels of the picture's coordinates.
constexpr float PICTURE_TEXELS = 65535.0F;

/// Samples that the shader takes for a pixel of the picture, in each direction.
constexpr float SAMPLES = 4.0F;

const void* offset(std::size_t bytes) {
    return reinterpret_cast<const void*>(bytes);  // NOLINT: OpenGL takes offsets as pointers
}

}  // namespace

std::string Renderer::create() {
    abandon();
    mFunctions.getIntegerv(GL_MAX_TEXTURE_SIZE, &mLargestTexture);
    if (mLargestTexture < GlyphCache::LARGEST_SIDE) {
        return "textures of " + std::to_string(GlyphCache::LARGEST_SIDE) + " texels are not supported";
    }
    std::string error = createProgram();
    if (!error.empty()) {
        destroy();
        return error;
    }
    mFunctions.useProgram(mObjects.program);
    mFunctions.uniform1i(mFunctions.getUniformLocation(mObjects.program, "image"), SavedState::TEXTURE_UNIT);
    createBuffer();
    mObjects.glyphs = createTexture(GL_NEAREST);
    return {};
}

void Renderer::destroy() {
    const Functions& gl = mFunctions;
    if (mObjects.program != 0) {
        gl.deleteProgram(mObjects.program);
    }
    for (const GLuint texture : {mObjects.glyphs, mObjects.picture}) {
        if (texture != 0) {
            gl.deleteTextures(1, &texture);
        }
    }
    if (mObjects.vertexArray != 0) {
        gl.deleteVertexArrays(1, &mObjects.vertexArray);
    }
    if (mObjects.buffer != 0) {
        gl.deleteBuffers(1, &mObjects.buffer);
    }
    abandon();
}

void Renderer::abandon() {
    mObjects = {};
    mUniforms = {};
    mGlyphSide = 0;
    mBufferSize = 0;
    mShownDrawing = 0;
    mPictureSize = {0, 0};
    mUniformSize = {0, 0};
    mUniformSide = 0;
    mUniformSrgb = -1;
}

GLuint Renderer::compile(GLenum stage, const char* const* sources, int count, std::string& error) {
    const Functions& gl = mFunctions;
    const GLuint shader = gl.createShader(stage);
    gl.shaderSource(shader, count, sources, nullptr);
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

std::string Renderer::createProgram() {
    const Functions& gl = mFunctions;
    std::string error;
    const ShaderSource vertexSource = vertexShader(gl);
    const ShaderSource fragmentSource = fragmentShader(gl);
    const GLuint vertex = compile(GL_VERTEX_SHADER, vertexSource.mTexts, ShaderSource::COUNT, error);
    const GLuint fragment =
        vertex != 0 ? compile(GL_FRAGMENT_SHADER, fragmentSource.mTexts, ShaderSource::COUNT, error) : 0;
    if (fragment != 0) {
        mObjects.program = gl.createProgram();
        gl.attachShader(mObjects.program, vertex);
        gl.attachShader(mObjects.program, fragment);
        gl.bindAttribLocation(mObjects.program, PLACE, "place");
        gl.bindAttribLocation(mObjects.program, TEXEL, "texel");
        gl.bindAttribLocation(mObjects.program, INK, "ink");
        gl.linkProgram(mObjects.program);
        gl.detachShader(mObjects.program, vertex);
        gl.detachShader(mObjects.program, fragment);
        gl.deleteShader(fragment);
        GLint isLinked = GL_FALSE;
        gl.getProgramiv(mObjects.program, GL_LINK_STATUS, &isLinked);
        if (isLinked == GL_FALSE) {
            std::array<char, 512> log{};
            gl.getProgramInfoLog(mObjects.program, static_cast<GLsizei>(log.size()), nullptr, log.data());
            error = std::string("the shaders do not link: ") + log.data();
        }
    }
    if (vertex != 0) {
        gl.deleteShader(vertex);
    }
    if (error.empty()) {
        mUniforms.toClip = gl.getUniformLocation(mObjects.program, "toClip");
        mUniforms.source = gl.getUniformLocation(mObjects.program, "source");
        mUniforms.linear = gl.getUniformLocation(mObjects.program, "linear");
    }
    return error;
}

void Renderer::createBuffer() {
    const Functions& gl = mFunctions;
    gl.genBuffers(1, &mObjects.buffer);
    if (gl.features.vertexArrays) {
        gl.genVertexArrays(1, &mObjects.vertexArray);
        gl.bindVertexArray(mObjects.vertexArray);
        gl.bindBuffer(GL_ARRAY_BUFFER, mObjects.buffer);
        setAttributes();
    }
}

void Renderer::setAttributes() {
    const Functions& gl = mFunctions;
    constexpr GLsizei STRIDE = sizeof(Vertex);
    gl.enableVertexAttribArray(PLACE);
    gl.enableVertexAttribArray(TEXEL);
    gl.enableVertexAttribArray(INK);
    gl.vertexAttribPointer(PLACE, 2, GL_FLOAT, GL_FALSE, STRIDE, offset(offsetof(Vertex, x)));
    gl.vertexAttribPointer(TEXEL, 2, GL_UNSIGNED_SHORT, GL_FALSE, STRIDE, offset(offsetof(Vertex, u)));
    gl.vertexAttribPointer(INK, 4, GL_UNSIGNED_BYTE, GL_TRUE, STRIDE, offset(offsetof(Vertex, color)));
}

GLuint Renderer::createTexture(GLint filter) {
    const Functions& gl = mFunctions;
    GLuint texture = 0;
    gl.genTextures(1, &texture);
    gl.bindTexture(GL_TEXTURE_2D, texture);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return texture;
}

bool Renderer::show(DrawTarget& target, SavedState& state) {
    const Functions& gl = mFunctions;
    const Batch& batch = target.batch;
    if (mObjects.program == 0 || batch.vertexCount() == 0) {
        return true;
    }
    const auto longest = static_cast<GLint>(std::max(target.shape.mWidth, target.shape.mHeight));
    const bool hasPicture = batch.picture().mCount != 0 && longest <= mLargestTexture;
    if (hasPicture && !copyPicture(target, state)) {
        return false;
    }
    gl.bindTexture(GL_TEXTURE_2D, mObjects.glyphs);
    if (!uploadGlyphs(target, state)) {
        return false;
    }
    if (gl.features.vertexArrays) {
        gl.bindVertexArray(mObjects.vertexArray);
    }
    // What comes right after the drawing that is in the buffer may be the same once more.
    const bool isNew =
        mShownDrawing != target.drawing && (mShownDrawing + 1 != target.drawing || !batch.isRepeated());
    if (isNew || !gl.features.vertexArrays) {
        gl.bindBuffer(GL_ARRAY_BUFFER, mObjects.buffer);
    }
    if (isNew) {
        uploadVertices(target);
    }
    mShownDrawing = target.drawing;
    if (!gl.features.vertexArrays) {
        setAttributes();
    }
    gl.useProgram(mObjects.program);
    setUniforms(target);

    const auto count = static_cast<GLsizei>(batch.vertexCount());
    const auto first = static_cast<GLint>(batch.picture().mFirst);
    const auto pictureCount = static_cast<GLsizei>(batch.picture().mCount);
    if (pictureCount == 0) {
        gl.drawArrays(GL_TRIANGLES, 0, count);
        return true;
    }
    const GLint rest = first + pictureCount;
    if (first > 0) {
        gl.drawArrays(GL_TRIANGLES, 0, first);
    }
    if (hasPicture) {
        showPicture(batch);
        gl.bindTexture(GL_TEXTURE_2D, mObjects.glyphs);
    }
    if (rest < count) {
        gl.drawArrays(GL_TRIANGLES, rest, count - rest);
    }
    return true;
}

void Renderer::showPicture(const Batch& batch) {
    const Functions& gl = mFunctions;
    const glm::vec2 step = batch.pictureScale() / SAMPLES;
    gl.bindTexture(GL_TEXTURE_2D, mObjects.picture);
    gl.uniform4f(mUniforms.source, 1.0F / PICTURE_TEXELS, 1.0F / PICTURE_TEXELS,
                 step.x / static_cast<float>(mPictureSize.x), step.y / static_cast<float>(mPictureSize.y));
    gl.drawArrays(GL_TRIANGLES, static_cast<GLint>(batch.picture().mFirst),
                  static_cast<GLsizei>(batch.picture().mCount));
    setGlyphSource(mGlyphSide);
}

void Renderer::setGlyphSource(int side) {
    const float scale = 1.0F / static_cast<float>(side);
    mFunctions.uniform4f(mUniforms.source, scale, scale, 0.0F, 0.0F);
}

bool Renderer::uploadGlyphs(DrawTarget& target, SavedState& state) {
    const Functions& gl = mFunctions;
    const GlyphCache& glyphs = target.glyphs;
    const bool isNew = mGlyphSide != glyphs.side();
    if (!isNew && !glyphs.isChanged()) {
        return true;
    }
    if (!state.prepareUpload()) {
        return false;
    }
    const GlyphCache::Rows rows = target.glyphs.takeChanges();
    const GLenum format = gl.features.redTextures ? GL_RED : GL_ALPHA;
    const int side = glyphs.side();
    if (isNew) {
        const GLint stored = gl.features.redTextures ? GL_R8 : GL_ALPHA;
        gl.texImage2D(GL_TEXTURE_2D, 0, stored, side, side, 0, format, GL_UNSIGNED_BYTE, glyphs.texels());
        mGlyphSide = side;
        return true;
    }
    gl.texSubImage2D(GL_TEXTURE_2D, 0, 0, rows.mFirst, side, rows.mEnd - rows.mFirst, format,
                     GL_UNSIGNED_BYTE, glyphs.texels() + static_cast<std::ptrdiff_t>(rows.mFirst) * side);
    return true;
}

bool Renderer::copyPicture(const DrawTarget& target, SavedState& state) {
    const Functions& gl = mFunctions;
    if (!state.prepareCopy()) {
        return false;
    }
    const glm::uvec2 size(target.shape.mWidth, target.shape.mHeight);
    const auto width = static_cast<GLsizei>(size.x);
    const auto height = static_cast<GLsizei>(size.y);
    if (mObjects.picture == 0) {
        mObjects.picture = createTexture(GL_LINEAR);
    } else {
        gl.bindTexture(GL_TEXTURE_2D, mObjects.picture);
    }
    if (mPictureSize != size) {
        if (!state.prepareUpload()) {
            return false;
        }
        gl.texImage2D(GL_TEXTURE_2D, 0, GL_RGB, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
        mPictureSize = size;
    }
    gl.copyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, width, height);
    return true;
}

void Renderer::uploadVertices(const DrawTarget& target) {
    const Functions& gl = mFunctions;
    const std::size_t size = target.batch.vertexCount() * sizeof(Vertex);
    mBufferSize = std::max(mBufferSize, (size + BUFFER_STEP - 1) / BUFFER_STEP * BUFFER_STEP);
    // Storage of its own for each drawing: the one before may still be read.
    gl.bufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(mBufferSize), nullptr, GL_STREAM_DRAW);
    gl.bufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(size), target.batch.vertices());
}

void Renderer::setUniforms(const DrawTarget& target) {
    const Functions& gl = mFunctions;
    const glm::uvec2 size(target.shape.mWidth, target.shape.mHeight);
    if (mUniformSize != size) {
        gl.uniform4f(mUniforms.toClip, 2.0F / static_cast<float>(size.x), -2.0F / static_cast<float>(size.y),
                     -1.0F, 1.0F);
        mUniformSize = size;
    }
    if (mUniformSide != mGlyphSide) {
        setGlyphSource(mGlyphSide);
        mUniformSide = mGlyphSide;
    }
    const int isLinear = mIsSrgb && !gl.features.framebufferSrgb ? 1 : 0;
    if (mUniformSrgb != isLinear) {
        gl.uniform1f(mUniforms.linear, static_cast<float>(isLinear));
        mUniformSrgb = isLinear;
    }
}

}  // namespace opengl
