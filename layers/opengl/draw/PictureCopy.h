#pragma once

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

#include "drawlist/DrawList.h"
#include "opengl/draw/Program.h"
#include "opengl/gl/Functions.h"

namespace opengl {

class SavedState;

/// The application's picture, taken off the surface twice a second while it is shown, and shrunk then to the
/// pixels that it is shown on. Where there are no framebuffers to draw into, all of it is kept, and one
/// sample of it shown for a pixel.
class PictureCopy {
public:
    explicit PictureCopy(const Functions& functions) : mFunctions(functions) {}

    void create();
    void destroy();
    void abandon();

    /// Takes the picture when that is due, before anything else is drawn in the frame. The vertices of the
    /// batch are bound. False: there is none to show.
    bool refresh(drawlist::DrawList& list, SavedState& state);

    GLuint texture() const { return isShrunk() ? mSmall.name : mWhole.name; }

    /// From the uv of the picture's vertices to coordinates of the texture.
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
    bool shrink(const drawlist::DrawList& list, float samples, SavedState& state);
    bool resize(Texture& texture, const glm::ivec2& size, GLenum format, SavedState& state);
    bool attach(const Texture& texture, SavedState& state);
    void dropFramebuffer();

    const Functions& mFunctions;
    Program mProgram;
    GLuint mFramebuffer = 0;
    Texture mWhole;  ///< the surface's picture, of its size or reduced
    Texture mSmall;  ///< as it is shown
    GLint mLargestTexture = 0;
    bool mIsTaken = false;
};

}  // namespace opengl
