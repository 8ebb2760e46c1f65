#pragma once

#include "drawlist/DrawList.h"
#include "opengl/draw/Program.h"
#include "opengl/gl/Functions.h"

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

namespace opengl {

class SavedState;

/// The application's picture, copied from the surface twice a second while it is shown, and reduced to the
/// size in which it is shown. Without framebuffers to draw into, it keeps the full size and shows one sample
/// a pixel.
class PictureCopy {
public:
    explicit PictureCopy(const Functions& functions) : mFunctions(functions) {}

    void create();
    void destroy();
    void abandon();

    /// Copies the picture if it is due, and shrinks it a frame later: no frame has all of the work. Call it
    /// before anything else is drawn in the frame, with the batch's vertices bound. False when there is no
    /// picture to show.
    bool refresh(drawlist::DrawList& list, SavedState& state);

    GLuint texture() const { return isShrunk() ? mSmall.name : mWhole.name; }

    /// Maps the uv of the picture's vertices to coordinates of the texture.
    glm::vec4 toTexture(const drawlist::Batch& batch) const;

private:
    struct Texture {
        GLuint name = 0;
        glm::ivec2 size{0, 0};
    };

    bool isShrunk() const { return mFramebuffer != 0; }
    bool take(const drawlist::DrawList& list, SavedState& state);
    bool isReducible(const drawlist::DrawList& list) const;
    bool copy(const glm::ivec2& surface, SavedState& state);
    bool reduce(const drawlist::DrawList& list, const glm::ivec2& surface, SavedState& state);
    bool shrink(const drawlist::DrawList& list, SavedState& state);
    void drawShrunk(const drawlist::DrawList& list);
    bool resize(Texture& texture, const glm::ivec2& size, GLenum format, SavedState& state);
    bool attach(const Texture& texture, SavedState& state);
    void dropFramebuffer();

    const Functions& mFunctions;
    Program mMean16;  ///< shrinks the picture in full size
    Program mMean4;   ///< shrinks the reduced one
    GLuint mFramebuffer = 0;
    Texture mWhole;  ///< the whole surface, in full size or reduced
    Texture mSmall;  ///< in the size in which it is shown
    GLint mLargestTexture = 0;
    bool mIsReduced = false;  ///< mWhole is not in full size
    bool mIsCopied = false;   ///< since the last frame, and not yet shrunk
    bool mIsTaken = false;
};

}  // namespace opengl
