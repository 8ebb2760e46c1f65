#pragma once

#include <glm/vec2.hpp>

#include <array>
#include <cstddef>
#include <string>

#include "drawlist/DrawList.h"
#include "opengl/draw/Program.h"
#include "opengl/gl/Functions.h"

namespace opengl {

class SavedState;

/// Shows a batch in one context: one program, one vertex buffer, one texture for glyphs and one for the
/// application's picture, at most three drawing calls, and nothing uploaded that has not changed. The
/// application's picture is that of the frame in which the drawing was shown first, or in which the surface
/// got its size: a drawing that is shown again shows it again.
class Renderer {
public:
    explicit Renderer(const Functions& functions) : mFunctions(functions) {}

    std::string create();
    void destroy();
    void abandon();

    /// Whether the surface converts what is written to it to sRGB.
    void setSrgb(bool isSrgb) { mIsSrgb = isSrgb; }

    bool show(drawlist::DrawList& list, SavedState& state);

private:
    /// Names in the context; 0 where there is none.
    struct Objects {
        GLuint buffer = 0;
        GLuint vertexArray = 0;
        GLuint glyphs = 0;
        GLuint picture = 0;
    };

    /// Whether colours are written as linear ones, which the surface converts whether wanted or not.
    bool isLinear() const { return mIsSrgb && !mFunctions.features.framebufferSrgb; }

    void createBuffer();
    GLuint createTexture(GLint filter);
    void setAttributes();
    bool uploadGlyphs(drawlist::DrawList& list, SavedState& state);
    bool copyPicture(const drawlist::DrawList& list, SavedState& state);
    void uploadVertices(const drawlist::DrawList& list);
    void showPicture(const drawlist::Batch& batch, const Program& program);

    const Functions& mFunctions;
    Objects mObjects;
    std::array<Program, 2> mPrograms;  ///< the second one with linear colours, each when it is needed first
    bool mIsSrgb = false;

    // What the context has.
    int mGlyphSide = 0;
    GLint mLargestTexture = 0;
    std::size_t mBufferSize = 0;
    unsigned int mShownDrawing = 0;
    glm::uvec2 mPictureSize{0, 0};
    unsigned int mPictureDrawing = 0;  ///< the one the picture was copied for
};

}  // namespace opengl
