#include "opengl/draw/Renderer.h"

#include "opengl/draw/Textures.h"
#include "opengl/gl/ObjectNames.h"
#include "opengl/gl/SavedState.h"

#include <algorithm>

namespace opengl {

using Part = drawlist::Batch::Part;

namespace {

/// The buffer grows by multiples of this.
constexpr std::size_t BUFFER_STEP = 16384;

/// Of a vertex in the buffer, in bytes.
GLsizeiptr place(std::size_t vertex) {
    return static_cast<GLsizeiptr>(vertex * sizeof(drawlist::Vertex));
}

const void* offset(std::size_t bytes) {
    return reinterpret_cast<const void*>(bytes);  // NOLINT: OpenGL takes offsets as pointers
}

}  // namespace

std::string Renderer::create(const drawlist::DrawList& list) {
    abandon();
    GLint largest = 0;
    mFunctions.getIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    if (largest < drawlist::GlyphCache::LARGEST_SIDE) {
        return "textures of " + std::to_string(drawlist::GlyphCache::LARGEST_SIDE) +
               " texels are not supported";
    }
    std::string error = createPrograms(isLinear(list));
    if (!error.empty()) {
        return error;
    }
    createBuffer();
    createGlyphs();
    mPicture.create();
    return {};
}

std::string Renderer::createPrograms(bool isLinear) {
    const Functions& gl = mFunctions;
    Programs& programs = mPrograms[isLinear ? 1 : 0];
    const bool isAlike = !gl.features.redGreenTextures || gl.features.textureSwizzle;
    std::string error = programs.glyphs.create(gl, isAlike ? Shading::COLOR : Shading::GLYPHS, isLinear);
    if (error.empty() && !isAlike) {
        error = programs.picture.create(gl, Shading::COLOR, isLinear);
    }
    if (error.empty() && gl.features.softwareRaster) {
        error = programs.solid.create(gl, Shading::SOLID, isLinear);
    }
    if (!error.empty()) {
        programs.glyphs.destroy(gl);
        programs.picture.destroy(gl);
    }
    return error;
}

void Renderer::destroy() {
    const Functions& gl = mFunctions;
    mPicture.destroy();
    for (Programs& programs : mPrograms) {
        programs.glyphs.destroy(gl);
        programs.picture.destroy(gl);
        programs.solid.destroy(gl);
    }
    if (mObjects.glyphs != 0) {
        gl.deleteTextures(1, &mObjects.glyphs);
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
    mPicture.abandon();
    mObjects = {};
    mPrograms = {};
    mGlyphSide = 0;
    mBufferSize = 0;
    mShownDrawing = 0;
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

void Renderer::createGlyphs() {
    const Functions& gl = mFunctions;
    mObjects.glyphs = createTexture(gl, GL_NEAREST);
    if (gl.features.redGreenTextures && gl.features.textureSwizzle) {
        for (const GLenum color :
             std::array<GLenum, 3>{GL_TEXTURE_SWIZZLE_R, GL_TEXTURE_SWIZZLE_G, GL_TEXTURE_SWIZZLE_B}) {
            gl.texParameteri(GL_TEXTURE_2D, color, GL_RED);
        }
        gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_A, GL_GREEN);
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

bool Renderer::show(drawlist::DrawList& list, SavedState& state) {
    const Functions& gl = mFunctions;
    const drawlist::Batch& batch = list.batch;
    if (mObjects.buffer == 0 || batch.vertexCount() == 0) {
        return true;
    }
    Programs& programs = mPrograms[isLinear(list) ? 1 : 0];
    if (!programs.glyphs && !createPrograms(isLinear(list)).empty()) {
        return false;
    }
    bindVertices(list);
    const bool hasPicture = batch.hasPicture() && mPicture.refresh(list, state);
    gl.bindTexture(GL_TEXTURE_2D, mObjects.glyphs);
    if (!uploadGlyphs(list, state)) {
        return false;
    }
    for (const drawlist::Draw& draw : list.draws()) {
        if (draw.vertices.count != 0 && (hasPicture || draw.part != Part::PICTURE)) {
            drawPart(list, draw, programs);
        }
    }
    return true;
}

void Renderer::drawPart(const drawlist::DrawList& list, const drawlist::Draw& draw, Programs& programs) {
    const Functions& gl = mFunctions;
    const auto width = static_cast<float>(list.shape.width);
    const auto height = static_cast<float>(list.shape.height);
    const glm::vec4 toClip(2.0F / width, -2.0F / height, -1.0F, 1.0F);
    if (draw.part == Part::PICTURE) {
        gl.bindTexture(GL_TEXTURE_2D, mPicture.texture());
        Program& program = programs.picture ? programs.picture : programs.glyphs;
        program.use(gl, toClip, mPicture.toTexture(list.batch));
    } else if (draw.part == Part::SOLID && programs.solid) {
        programs.solid.use(gl, toClip, glm::vec4(0.0F));
    } else {
        const float toGlyphs = 1.0F / static_cast<float>(mGlyphSide);
        gl.bindTexture(GL_TEXTURE_2D, mObjects.glyphs);
        programs.glyphs.use(gl, toClip, {toGlyphs, toGlyphs, 0.0F, 0.0F});
    }
    gl.drawArrays(GL_TRIANGLES, static_cast<GLint>(draw.vertices.first),
                  static_cast<GLsizei>(draw.vertices.count));
}

void Renderer::bindVertices(const drawlist::DrawList& list) {
    const Functions& gl = mFunctions;
    if (gl.features.vertexArrays) {
        gl.bindVertexArray(mObjects.vertexArray);
    }
    // What comes right after the drawing that is in the buffer may be the same once more.
    const bool isNew =
        mShownDrawing != list.drawing && (mShownDrawing + 1 != list.drawing || !list.batch.isRepeated());
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
    const GLenum format = gl.features.redGreenTextures ? GL_RG : LUMINANCE_ALPHA;
    const int side = glyphs.side();
    if (isNew) {
        const GLint stored = gl.features.redGreenTextures ? GL_RG8 : LUMINANCE_ALPHA;
        gl.texImage2D(GL_TEXTURE_2D, 0, stored, side, side, 0, format, GL_UNSIGNED_BYTE, glyphs.texels());
        mGlyphSide = side;
        return true;
    }
    gl.texSubImage2D(GL_TEXTURE_2D, 0, 0, rows.first, side, rows.end - rows.first, format, GL_UNSIGNED_BYTE,
                     glyphs.row(rows.first));
    return true;
}

void Renderer::uploadVertices(const drawlist::DrawList& list) {
    const Functions& gl = mFunctions;
    const std::size_t size = list.batch.vertexCount() * sizeof(drawlist::Vertex);
    mBufferSize = std::max(mBufferSize, (size + BUFFER_STEP - 1) / BUFFER_STEP * BUFFER_STEP);
    // Storage of its own for each drawing: the one before may still be read.
    gl.bufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(mBufferSize), nullptr, GL_STREAM_DRAW);
    for (const drawlist::Draw& draw : list.draws()) {
        if (draw.vertices.count != 0) {
            gl.bufferSubData(GL_ARRAY_BUFFER, place(draw.vertices.first), place(draw.vertices.count),
                             list.batch.vertices(draw.part));
        }
    }
}

}  // namespace opengl
