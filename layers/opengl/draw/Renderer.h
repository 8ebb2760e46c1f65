#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "drawlist/DrawList.h"
#include "opengl/draw/PictureCopy.h"
#include "opengl/draw/Program.h"
#include "opengl/gl/Functions.h"

namespace opengl {

class SavedState;

/// Shows a draw list in one context: one vertex buffer, a texture for glyphs and a small one for the
/// application's picture, a program for each, at most three drawing calls, and nothing uploaded that has not
/// changed.
class Renderer {
public:
    explicit Renderer(const Functions& functions) : mFunctions(functions), mPicture(functions) {}

    /// An empty text, or why the overlay cannot be drawn in this context.
    std::string create(const drawlist::DrawList& list);
    void destroy();
    void abandon();

    bool show(drawlist::DrawList& list, SavedState& state);

private:
    /// Names in the context; 0 where there is none.
    struct Objects {
        GLuint buffer = 0;
        GLuint vertexArray = 0;
        GLuint glyphs = 0;
    };

    /// What shows glyphs and solid areas, and what shows the application's picture; where the texture of
    /// glyphs can pass for one of white pixels, the first does both.
    struct Programs {
        Program glyphs;
        Program picture;
    };

    /// Whether colours are written as linear ones, which the surface converts whether wanted or not.
    bool isLinear(const drawlist::DrawList& list) const {
        return list.isSrgb && !mFunctions.features.framebufferSrgb;
    }

    std::string createPrograms(bool isLinear);
    void createBuffer();
    void createGlyphs();
    void setAttributes();
    void bindVertices(const drawlist::DrawList& list);
    bool uploadGlyphs(drawlist::DrawList& list, SavedState& state);
    void uploadVertices(const drawlist::DrawList& list);

    const Functions& mFunctions;
    Objects mObjects;
    std::array<Programs, 2>
        mPrograms;  ///< the second ones with linear colours, made when they are needed first
    PictureCopy mPicture;

    // What the context has.
    int mGlyphSide = 0;
    std::size_t mBufferSize = 0;
    unsigned int mShownDrawing = 0;
};

}  // namespace opengl
