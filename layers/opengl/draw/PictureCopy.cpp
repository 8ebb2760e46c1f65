#include "opengl/draw/PictureCopy.h"

#include "opengl/draw/Textures.h"
#include "opengl/gl/ObjectNames.h"
#include "opengl/gl/SavedState.h"

#include <algorithm>
#include <cmath>

namespace opengl {

namespace {

/// How many samples in a row make a pixel: of the full-size picture, or of one that was reduced to twice the
/// size shown.
constexpr float SAMPLES = 4.0F;
constexpr float REDUCED_SAMPLES = 2.0F;
constexpr float REDUCED_SIZE = 2.0F;

glm::ivec2 surfaceSize(const drawlist::DrawList& list) {
    return {list.shape.width, list.shape.height};
}

/// Maps the uv of the picture's vertices to fractions of the application's picture, whose rows count from the
/// bottom.
glm::vec4 toShares(const drawlist::Batch& batch) {
    const raster::Box& box = batch.pictureBox();
    const glm::vec2 first(batch.picturePixels().left, batch.picturePixels().top);
    const glm::vec2 size(box.right - box.left, box.bottom - box.top);
    const glm::vec2 start = (first - glm::vec2(box.left, box.top)) / size;
    return {1.0F / size.x, -1.0F / size.y, start.x, 1.0F - start.y};
}

}  // namespace

void PictureCopy::create() {
    const Functions& gl = mFunctions;
    gl.getIntegerv(GL_MAX_TEXTURE_SIZE, &mLargestTexture);
    if (!gl.features.framebuffers || !mMean16.create(gl, Shading::MEAN_16, false).empty()) {
        return;
    }
    mFramebuffer = newFramebuffer(gl);
    if (gl.features.readFramebuffers) {
        mMean4.create(gl, Shading::MEAN_4, false);  // without it no picture is reduced
    }
}

void PictureCopy::destroy() {
    const Functions& gl = mFunctions;
    mMean16.destroy(gl);
    mMean4.destroy(gl);
    for (const Texture& texture : {mWhole, mSmall}) {
        if (texture.name != 0) {
            gl.deleteTextures(1, &texture.name);
        }
    }
    dropFramebuffer();
    abandon();
}

void PictureCopy::dropFramebuffer() {
    if (mFramebuffer != 0) {
        mFunctions.deleteFramebuffers(1, &mFramebuffer);
        mFramebuffer = 0;
    }
}

void PictureCopy::abandon() {
    mMean16 = {};
    mMean4 = {};
    mFramebuffer = 0;
    mWhole = {};
    mSmall = {};
    mIsCopied = false;
    mIsTaken = false;
}

bool PictureCopy::refresh(drawlist::DrawList& list, SavedState& state) {
    if (mIsCopied) {
        mIsCopied = false;
        mIsTaken = shrink(list, state);
    } else if (list.pictureTimer.isDue()) {
        // After a failure, do not try again in every frame.
        list.pictureTimer.restart();
        const bool isCopied = take(list, state);
        if (!isCopied || !isShrunk()) {
            mIsTaken = isCopied || mIsTaken;
        } else if (mIsTaken) {
            mIsCopied = true;
        } else {
            mIsTaken = shrink(list, state);
        }
    }
    return mIsTaken;
}

bool PictureCopy::take(const drawlist::DrawList& list, SavedState& state) {
    const glm::ivec2 surface = surfaceSize(list);
    if (!state.prepareCopy()) {
        return false;
    }
    mIsReduced = isReducible(list);
    if (!mIsReduced) {
        return copy(surface, state);
    }
    const bool isTaken = reduce(list, surface, state);
    state.drawInto(0, surface.x, surface.y);
    return isTaken;
}

/// Whether the picture can be reduced while it is copied, which writes and keeps far less. Not from surfaces
/// with several samples a pixel, which do not allow it, nor from those that store sRGB, which would convert
/// it.
bool PictureCopy::isReducible(const drawlist::DrawList& list) const {
    const Functions& gl = mFunctions;
    if (!isShrunk() || !mMean4 || list.isSrgb) {
        return false;
    }
    GLint buffers = 0;
    gl.getIntegerv(GL_SAMPLE_BUFFERS, &buffers);
    return buffers == 0;
}

bool PictureCopy::copy(const glm::ivec2& surface, SavedState& state) {
    if (std::max(surface.x, surface.y) > mLargestTexture || !resize(mWhole, surface, GL_RGB, state)) {
        return false;
    }
    mFunctions.bindTexture(GL_TEXTURE_2D, mWhole.name);
    mFunctions.copyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, surface.x, surface.y);
    return true;
}

bool PictureCopy::reduce(const drawlist::DrawList& list, const glm::ivec2& surface, SavedState& state) {
    const raster::Box& box = list.batch.pictureBox();
    const glm::ivec2 size(raster::toInt(std::round(REDUCED_SIZE * (box.right - box.left)), 1, surface.x),
                          raster::toInt(std::round(REDUCED_SIZE * (box.bottom - box.top)), 1, surface.y));
    if (!resize(mWhole, size, GL_RGBA, state) || !attach(mWhole, state)) {
        return false;
    }
    mFunctions.blitFramebuffer(0, 0, surface.x, surface.y, 0, 0, size.x, size.y, GL_COLOR_BUFFER_BIT,
                               GL_LINEAR);
    return true;
}

bool PictureCopy::shrink(const drawlist::DrawList& list, SavedState& state) {
    const raster::PixelRect& pixels = list.batch.picturePixels();
    const glm::ivec2 size(pixels.width(), pixels.height());
    const bool isReady = resize(mSmall, size, GL_RGBA, state) && attach(mSmall, state);
    if (isReady) {
        drawShrunk(list);
    }
    const glm::ivec2 surface = surfaceSize(list);
    state.drawInto(0, surface.x, surface.y);
    return isReady;
}

void PictureCopy::drawShrunk(const drawlist::DrawList& list) {
    const Functions& gl = mFunctions;
    const raster::PixelRect& pixels = list.batch.picturePixels();
    const glm::vec2 toClip = 2.0F / glm::vec2(pixels.width(), pixels.height());
    const glm::vec2 start = -1.0F - glm::vec2(pixels.left, pixels.top) * toClip;
    const glm::vec4 shares = toShares(list.batch);
    Program& mean = mIsReduced ? mMean4 : mMean16;
    mean.use(gl, glm::vec4(toClip, start), shares);
    mean.setGap(gl, glm::vec2(shares) / (mIsReduced ? REDUCED_SAMPLES : SAMPLES));
    gl.bindTexture(GL_TEXTURE_2D, mWhole.name);
    const drawlist::Batch::Range picture = list.rangeOf(drawlist::Batch::Part::PICTURE);
    gl.drawArrays(GL_TRIANGLES, static_cast<GLint>(picture.first), static_cast<GLsizei>(picture.count));
}

/// False when the context does not allow it in this frame.
bool PictureCopy::resize(Texture& texture, const glm::ivec2& size, GLenum format, SavedState& state) {
    if (texture.size == size) {
        return true;
    }
    if (!state.prepareUpload()) {
        return false;
    }
    const Functions& gl = mFunctions;
    if (texture.name == 0) {
        texture.name = createTexture(gl, &texture == &mSmall ? GL_NEAREST : GL_LINEAR);
    } else {
        gl.bindTexture(GL_TEXTURE_2D, texture.name);
    }
    gl.texImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), size.x, size.y, 0, format, GL_UNSIGNED_BYTE,
                  nullptr);
    texture.size = size;
    return true;
}

/// Directs drawing into the texture. If the context refuses, pictures are copied without a framebuffer from
/// then on.
bool PictureCopy::attach(const Texture& texture, SavedState& state) {
    const Functions& gl = mFunctions;
    const GLenum target = gl.features.readFramebuffers ? GL_DRAW_FRAMEBUFFER : GL_FRAMEBUFFER;
    state.drawInto(mFramebuffer, texture.size.x, texture.size.y);
    gl.framebufferTexture2D(target, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name, 0);
    if (gl.checkFramebufferStatus(target) != GL_FRAMEBUFFER_COMPLETE) {
        dropFramebuffer();
        return false;
    }
    return true;
}

glm::vec4 PictureCopy::toTexture(const drawlist::Batch& batch) const {
    if (!isShrunk()) {
        return toShares(batch);
    }
    const raster::PixelRect& pixels = batch.picturePixels();
    return {1.0F / static_cast<float>(pixels.width()), 1.0F / static_cast<float>(pixels.height()), 0.0F,
            0.0F};
}

}  // namespace opengl
