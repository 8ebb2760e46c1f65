#include "opengl/draw/Renderer.h"

#include <algorithm>

#include "opengl/gl/ObjectNames.h"
#include "opengl/gl/SavedState.h"

namespace opengl {

namespace {

/// The buffer grows by multiples of this.
constexpr std::size_t BUFFER_STEP = 16384;

/// Samples that the shader takes for a pixel of the picture, in each direction.
constexpr float SAMPLES = 4.0F;

const void* offset(std::size_t bytes) {
    return reinterpret_cast<const void*>(bytes);  // NOLINT: OpenGL takes offsets as pointers
}

}  // namespace

std::string Renderer::create() {
    abandon();
    mFunctions.getIntegerv(GL_MAX_TEXTURE_SIZE, &mLargestTexture);
    if (mLargestTexture < drawlist::GlyphCache::LARGEST_SIDE) {
        return "textures of " + std::to_string(drawlist::GlyphCache::LARGEST_SIDE) +
               " texels are not supported";
    }
    std::string error = mPrograms[isLinear() ? 1 : 0].create(mFunctions, isLinear());
    if (!error.empty()) {
        return error;
    }
    createBuffer();
    mObjects.glyphs = createTexture(GL_NEAREST);
    return {};
}

void Renderer::destroy() {
    const Functions& gl = mFunctions;
    for (Program& program : mPrograms) {
        program.destroy(gl);
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
    mPrograms = {};
    mGlyphSide = 0;
    mBufferSize = 0;
    mShownDrawing = 0;
    mPictureSize = {0, 0};
    mPictureDrawing = 0;
}

void Renderer::createBuffer() {
    const Functions& gl = mFunctions;
    mObjects.buffer = newBuffer(gl);
    if (gl.features.vertexArrays) {
        gl.genVertexArrays(1, &mObjects.vertexArray);
        gl.bindVertexArray(mObjects.vertexArray);
        gl.bindBuffer(GL_ARRAY_BUFFER, mObjects.buffer);
        setAttributes();
    }
}

void Renderer::setAttributes() {
    const Functions& gl = mFunctions;
    constexpr GLsizei STRIDE = sizeof(drawlist::Vertex);
    gl.enableVertexAttribArray(Program::POSITION);
    gl.enableVertexAttribArray(Program::UV);
    gl.enableVertexAttribArray(Program::COLOR);
    gl.vertexAttribPointer(Program::POSITION, 2, GL_FLOAT, GL_FALSE, STRIDE,
                           offset(offsetof(drawlist::Vertex, x)));
    gl.vertexAttribPointer(Program::UV, 2, GL_UNSIGNED_SHORT, GL_FALSE, STRIDE,
                           offset(offsetof(drawlist::Vertex, u)));
    gl.vertexAttribPointer(Program::COLOR, 4, GL_UNSIGNED_BYTE, GL_TRUE, STRIDE,
                           offset(offsetof(drawlist::Vertex, color)));
}

GLuint Renderer::createTexture(GLint filter) {
    const Functions& gl = mFunctions;
    const GLuint texture = newTexture(gl);
    gl.bindTexture(GL_TEXTURE_2D, texture);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return texture;
}

bool Renderer::show(drawlist::DrawList& list, SavedState& state) {
    const Functions& gl = mFunctions;
    const drawlist::Batch& batch = list.batch;
    if (mObjects.buffer == 0 || batch.vertexCount() == 0) {
        return true;
    }
    Program& program = mPrograms[isLinear() ? 1 : 0];
    if (!program && !program.create(gl, isLinear()).empty()) {
        return false;
    }
    const auto longest = static_cast<GLint>(std::max(list.shape.mWidth, list.shape.mHeight));
    const bool hasPicture = batch.picture().mCount != 0 && longest <= mLargestTexture;
    if (hasPicture && !copyPicture(list, state)) {
        return false;
    }
    gl.bindTexture(GL_TEXTURE_2D, mObjects.glyphs);
    if (!uploadGlyphs(list, state)) {
        return false;
    }
    if (gl.features.vertexArrays) {
        gl.bindVertexArray(mObjects.vertexArray);
    }
    // What comes right after the drawing that is in the buffer may be the same once more.
    const bool isNew =
        mShownDrawing != list.drawing && (mShownDrawing + 1 != list.drawing || !batch.isRepeated());
    if (isNew || !gl.features.vertexArrays) {
        gl.bindBuffer(GL_ARRAY_BUFFER, mObjects.buffer);
    }
    if (isNew) {
        uploadVertices(list);
    }
    mShownDrawing = list.drawing;
    if (!gl.features.vertexArrays) {
        setAttributes();
    }
    program.use(gl, {list.shape.mWidth, list.shape.mHeight}, mGlyphSide);

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
        showPicture(batch, program);
        gl.bindTexture(GL_TEXTURE_2D, mObjects.glyphs);
    }
    if (rest < count) {
        gl.drawArrays(GL_TRIANGLES, rest, count - rest);
    }
    return true;
}

void Renderer::showPicture(const drawlist::Batch& batch, const Program& program) {
    const Functions& gl = mFunctions;
    const glm::vec2 step = batch.pictureScale() / SAMPLES;
    gl.bindTexture(GL_TEXTURE_2D, mObjects.picture);
    program.beginPicture(gl, step / glm::vec2(mPictureSize));
    gl.drawArrays(GL_TRIANGLES, static_cast<GLint>(batch.picture().mFirst),
                  static_cast<GLsizei>(batch.picture().mCount));
    program.endPicture(gl);
}

bool Renderer::uploadGlyphs(drawlist::DrawList& list, SavedState& state) {
    const Functions& gl = mFunctions;
    const drawlist::GlyphCache& glyphs = list.glyphs;
    const bool isNew = mGlyphSide != glyphs.side();
    if (!isNew && !glyphs.isChanged()) {
        return true;
    }
    if (!state.prepareUpload()) {
        return false;
    }
    const drawlist::GlyphCache::Rows rows = list.glyphs.takeChanges();
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

bool Renderer::copyPicture(const drawlist::DrawList& list, SavedState& state) {
    const Functions& gl = mFunctions;
    const glm::uvec2 size(list.shape.mWidth, list.shape.mHeight);
    if (mPictureDrawing == list.drawing && mPictureSize == size) {
        return true;
    }
    if (!state.prepareCopy()) {
        return false;
    }
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
    mPictureDrawing = list.drawing;
    return true;
}

void Renderer::uploadVertices(const drawlist::DrawList& list) {
    const Functions& gl = mFunctions;
    const std::size_t size = list.batch.vertexCount() * sizeof(drawlist::Vertex);
    mBufferSize = std::max(mBufferSize, (size + BUFFER_STEP - 1) / BUFFER_STEP * BUFFER_STEP);
    // Storage of its own for each drawing: the one before may still be read.
    gl.bufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(mBufferSize), nullptr, GL_STREAM_DRAW);
    gl.bufferSubData(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(size), list.batch.vertices());
}

}  // namespace opengl
