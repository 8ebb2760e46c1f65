#pragma once

#include <glm/vec2.hpp>

#include <cstddef>
#include <string>

#include "opengl/draw/Batch.h"
#include "opengl/gl/Functions.h"

namespace opengl {

class SavedState;
struct DrawTarget;

/// Shows a batch in one context: one program, one vertex buffer, one texture for glyphs and one for the
/// application's picture, at most three drawing calls, and nothing uploaded that has not changed.
class Renderer {
public:
    explicit Renderer(const Functions& functions) : mFunctions(functions) {}

    std::string create();
    void destroy();
    void abandon();

    /// Whether the surface converts what is written to it to sRGB.
    void setSrgb(bool isSrgb) { mIsSrgb = isSrgb; }

    bool show(DrawTarget& target, SavedState& state);

private:
    /// Names in the context; 0 where there is none.
    struct Objects {
        GLuint program = 0;
        GLuint buffer = 0;
        GLuint vertexArray = 0;
        GLuint glyphs = 0;
        GLuint picture = 0;
    };

    /// Locations of the program's uniforms.
    struct Uniforms {
        GLint toClip = -1;
        GLint source = -1;
        GLint linear = -1;
    };

    std::string createProgram();
    GLuint compile(GLenum stage, const char* const* sources, int count, std::string& error);
    void createBuffer();
    GLuint createTexture(GLint filter);
    void setAttributes();
    bool uploadGlyphs(DrawTarget& target, SavedState& state);
    bool copyPicture(const DrawTarget& target, SavedState& state);
    void uploadVertices(const DrawTarget& target);
    void setUniforms(const DrawTarget& target);
    void setGlyphSource(int side);
    void showPicture(const Batch& batch);

    const Functions& mFunctions;
    Objects mObjects;
    Uniforms mUniforms;
    bool mIsSrgb = false;

    // What the context has.
    int mGlyphSide = 0;
    GLint mLargestTexture = 0;
    std::size_t mBufferSize = 0;
    unsigned int mShownDrawing = 0;
    glm::uvec2 mPictureSize{0, 0};
    glm::uvec2 mUniformSize{0, 0};
    int mUniformSide = 0;
    int mUniformSrgb = -1;
};

}  // namespace opengl
