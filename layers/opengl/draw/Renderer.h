#pragma once

#include "drawlist/DrawList.h"
#include "opengl/draw/PictureCopy.h"
#include "opengl/draw/Program.h"
#include "opengl/gl/Functions.h"

#include <array>
#include <cstddef>
#include <string>

namespace opengl {

class SavedState;

/// Shows a draw list in one context with one vertex buffer, a texture for glyphs, a small one for the
/// application's picture, a program for each kind of part, and at most three draw calls. Uploads only what
/// has changed.
class Renderer {
public:
    explicit Renderer(const Functions& functions) : mFunctions(functions), mPicture(functions) {}

    /// Returns an empty text, or why it cannot draw the overlay in this context.
    std::string create(const drawlist::DrawList& list);
    void destroy();
    void abandon();

    bool show(drawlist::DrawList& list, SavedState& state);

private:
    /// Object names in the context; 0 for none.
    struct Objects {
        GLuint buffer = 0;
        GLuint vertexArray = 0;
        GLuint glyphs = 0;
    };

    /// One program for glyphs, one for the application's picture. Where a swizzle lets the glyph texture look
    /// like one of white pixels, the first program does both. Solid areas have a program of their own where
    /// the processor draws them: reading the texture costs more there than changing the program.
    struct Programs {
        Program glyphs;
        Program picture;
        Program solid;
    };

    /// Whether to write linear colours, because the surface always converts them.
    bool isLinear(const drawlist::DrawList& list) const {
        return list.isSrgb && !mFunctions.features.framebufferSrgb;
    }

    std::string createPrograms(bool isLinear);
    void createBuffer();
    void createGlyphs();
    void setAttributes();
    void bindVertices(const drawlist::DrawList& list);
    void drawPart(const drawlist::DrawList& list, const drawlist::Draw& draw, Programs& programs);
    bool uploadGlyphs(drawlist::DrawList& list, SavedState& state);
    void uploadVertices(const drawlist::DrawList& list);

    const Functions& mFunctions;
    Objects mObjects;
    std::array<Programs, 2> mPrograms;  ///< [1] is for linear colours and made on first use
    PictureCopy mPicture;

    // The contents of the context's objects.
    int mGlyphSide = 0;
    std::size_t mBufferSize = 0;
    unsigned int mShownDrawing = 0;
};

}  // namespace opengl
