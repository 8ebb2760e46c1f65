#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <sstream>

#include "drawers/RectDrawer.h"
#include "opengl/context/HeadlessContext.h"
#include "opengl/draw/OverlayDrawing.h"
#include "opengl/gl/SavedState.h"
#include "opengl/state/RandomState.h"
#include "opengl/state/StateDump.h"

using opengl::Functions;
using opengl::SavedState;

namespace {

/// The context to test, as the build file words it: "core 32", "es 20 no-vertex-arrays".
struct Subject {
    HeadlessContext::Options options;
    bool hasVertexArrays = true;

    Subject() {
        const char* const text = std::getenv("OPENGL_STATE_TEST");
        std::istringstream words(text != nullptr ? text : "es 32");
        std::string api;
        int version = 0;
        words >> api >> version;
        options.api = api == "es"     ? HeadlessContext::Api::ES
                      : api == "core" ? HeadlessContext::Api::CORE
                                      : HeadlessContext::Api::COMPATIBILITY;
        options.major = version / 10;
        options.minor = version % 10;
        options.width = options.height = 16;
        for (std::string word; words >> word;) {
            options.samples = word == "multisample" ? 4 : options.samples;
            options.srgb = options.srgb || word == "srgb";
            options.debug = options.debug || word == "debug";
            hasVertexArrays = hasVertexArrays && word != "no-vertex-arrays";
        }
    }
};

struct Vertex {
    float place[2];
    float at[2];
    std::uint8_t colour[4];
};

// In the second row, the middle of three texels; a linear filter would not see it whole.
constexpr Vertex vertex(float x, float y, bool isOpaque) {
    return isOpaque ? Vertex{{x, y}, {0.4F, 0.7F}, {0, 128, 192, 255}}
                    : Vertex{{x, y}, {0.4F, 0.7F}, {255, 0, 0, 128}};
}

constexpr Vertex VERTICES[] = {vertex(-1, -1, true), vertex(1, -1, true),  vertex(1, 1, true),
                               vertex(-1, 1, true),  vertex(-1, 0, false), vertex(1, 0, false),
                               vertex(1, 1, false),  vertex(-1, 1, false)};
// One triangle of each rectangle turns the other way.
constexpr std::uint16_t INDICES[] = {0, 1, 2, 0, 3, 2, 4, 5, 6, 4, 7, 6};

/// Draws as the overlay does: one program, one vertex buffer, one texture of one channel; something opaque
/// over everything and something translucent on it.
class SampleOverlay {
public:
    explicit SampleOverlay(const Functions& gl) : mGl(gl) {
        const bool isCore = gl.version.isCore;
        const std::string head = isCore ? "#version 150\n#define attribute in\n" : "";
        const std::string vertex = head + (isCore ? "#define varying out\n" : "") +
                                   "attribute vec2 place; attribute vec2 at; attribute vec4 colour;"
                                   "varying vec2 texel; varying vec4 tint; void main() { texel = at;"
                                   "tint = colour; gl_Position = vec4(place, 0.0, 1.0); }";
        const std::string fragment =
            (isCore ? "#version 150\n#define varying in\n#define texture2D texture\nout vec4 result;\n"
                    : "#ifdef GL_ES\nprecision mediump float;\n#endif\n#define result gl_FragData[0]\n") +
            std::string("uniform sampler2D font; varying vec2 texel; varying vec4 tint; void main() {") +
            (gl.features.redTextures ? "float cover = texture2D(font, texel).r;"
                                     : "float cover = texture2D(font, texel).a;") +
            "result = vec4(tint.rgb, tint.a * cover); }";
        mProgram = gl.createProgram();
        attach(GL_VERTEX_SHADER, vertex.c_str());
        attach(GL_FRAGMENT_SHADER, fragment.c_str());
        const char* const attributes[] = {"place", "at", "colour"};
        for (GLuint i = 0; i < SavedState::ATTRIBUTES; ++i) {
            gl.bindAttribLocation(mProgram, i, attributes[i]);
        }
        gl.linkProgram(mProgram);
        gl.genBuffers(1, &mVertices);
        gl.bindBuffer(GL_ARRAY_BUFFER, mVertices);
        gl.bufferData(GL_ARRAY_BUFFER, sizeof VERTICES, VERTICES, GL_STREAM_DRAW);
        gl.genBuffers(1, &mIndices);
        gl.genTextures(1, &mTexture);
        gl.bindTexture(GL_TEXTURE_2D, mTexture);
        gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        gl.texParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        const bool isRed = gl.features.redTextures;
        mFormat = isRed ? GL_RED : GL_ALPHA;
        gl.texImage2D(GL_TEXTURE_2D, 0, isRed ? GL_R8 : GL_ALPHA, 3, 2, 0, mFormat, GL_UNSIGNED_BYTE,
                      nullptr);
        if (gl.features.vertexArrays) {
            gl.genVertexArrays(1, &mVertexArray);
            gl.bindVertexArray(mVertexArray);
            bindVertices();
            gl.bindVertexArray(0);
        }
        gl.bindBuffer(GL_ELEMENT_ARRAY_BUFFER, mIndices);
        gl.bufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof INDICES, INDICES, GL_STATIC_DRAW);
    }

    void upload() const {
        const std::uint8_t texels[] = {0, 0, 255, 0, 255, 0};  // the first of the second row would be wrong
        mGl.bindTexture(GL_TEXTURE_2D, mTexture);
        mGl.texSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 3, 2, mFormat, GL_UNSIGNED_BYTE, texels);
        mGl.bindBuffer(GL_ARRAY_BUFFER, mVertices);
        mGl.bufferSubData(GL_ARRAY_BUFFER, 0, sizeof VERTICES, VERTICES);
    }

    void draw() const {
        mGl.useProgram(mProgram);
        mGl.bindTexture(GL_TEXTURE_2D, mTexture);
        if (mGl.features.vertexArrays) {
            mGl.bindVertexArray(mVertexArray);
        } else {
            bindVertices();
        }
        mGl.drawElements(GL_TRIANGLES, std::size(INDICES), GL_UNSIGNED_SHORT, nullptr);
    }

private:
    void attach(GLenum type, const char* source) const {
        const GLuint shader = mGl.createShader(type);
        mGl.shaderSource(shader, 1, &source, nullptr);
        mGl.compileShader(shader);
        mGl.attachShader(mProgram, shader);
        mGl.deleteShader(shader);
    }

    void bindVertices() const {
        mGl.bindBuffer(GL_ARRAY_BUFFER, mVertices);
        mGl.bindBuffer(GL_ELEMENT_ARRAY_BUFFER, mIndices);
        const auto offset = [](std::size_t bytes) { return reinterpret_cast<const void*>(bytes); };
        mGl.vertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex), offset(offsetof(Vertex, place)));
        mGl.vertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, sizeof(Vertex), offset(offsetof(Vertex, at)));
        mGl.vertexAttribPointer(2, 4, GL_UNSIGNED_BYTE, GL_TRUE, sizeof(Vertex),
                                offset(offsetof(Vertex, colour)));
        for (GLuint i = 0; i < SavedState::ATTRIBUTES; ++i) {
            mGl.enableVertexAttribArray(i);
        }
    }

    const Functions& mGl;
    GLuint mProgram = 0, mVertices = 0, mIndices = 0, mTexture = 0, mVertexArray = 0;
    GLenum mFormat = 0;
};

/// The layer's own drawing: a rectangle and the application's picture in another, everything uploaded anew
/// and the picture taken every few frames, since a new drawing takes one at once.
class LayerOverlay {
public:
    explicit LayerOverlay(const Functions& gl)
        : mDrawing(gl),
          mRect(mDrawing.factory().createRect()),
          mPicture(mDrawing.factory().createThumbnail()) {
        mDrawing.setSurface(16, 16, false);
        mRect->mSize = mPicture->mSize = {0.5F, 0.5F};
        mRect->mColor = {1, 1, 0, 0.5F};
    }

    void draw(SavedState& saved, unsigned seed) {
        if (mIsCreated && seed % 8 == 7) {
            mDrawing.destroy();
            mIsCreated = false;
        }
        if (!mIsCreated) {
            EXPECT_EQ(mDrawing.create(), "");
            mIsCreated = true;
        }
        if (seed % 2 == 0) {
            mDrawing.factory().beginDrawing(false);
            mRect->draw();
            mPicture->draw();
        }
        mDrawing.show(saved);
    }

private:
    opengl::OverlayDrawing mDrawing;
    std::unique_ptr<drawer::RectDrawer> mRect;
    std::unique_ptr<drawer::Drawer> mPicture;
    bool mIsCreated = false;
};

/// Of the surface, the odd column at the right left out, so that rows end off any alignment.
constexpr std::size_t READ_WIDTH = 15;

bool isExpected(const std::vector<std::uint8_t>& pixels) {
    constexpr std::array<std::uint8_t, 4> LOWER = {0, 128, 192, 255};
    constexpr std::array<std::uint8_t, 4> UPPER = {128, 64, 96, 255};
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int expected = (i < pixels.size() / 2 ? LOWER : UPPER)[i % 4];
        if (std::abs(pixels[i] - expected) > 1) {
            return false;
        }
    }
    return true;
}

}  // namespace

TEST(SavedState, LeavesNoTraceAndDrawsTheSame) {
    const Subject subject;
    const auto context = HeadlessContext::create(subject.options);
    ASSERT_NE(context, nullptr);
    HeadlessContext::Options shared = subject.options;
    shared.shareWith = context.get();
    const auto other = HeadlessContext::create(shared);
    ASSERT_NE(other, nullptr);
    context->makeCurrent();
    Functions gl = context->functions();
    ASSERT_EQ(gl.version.major, subject.options.major);
    ASSERT_EQ(gl.version.minor, subject.options.minor);
    gl.features.vertexArrays = gl.features.vertexArrays && subject.hasVertexArrays;
    const auto getError = reinterpret_cast<PFNGLGETERRORPROC>(eglGetProcAddress("glGetError"));

    RandomState application(*context, *other, gl);
    const SampleOverlay overlay(gl);
    LayerOverlay layer(gl);
    ASSERT_EQ(getError(), GLenum{GL_NO_ERROR});
    const StateDump dump;
    SavedState saved(gl);
    std::vector<std::uint8_t> pixels(4 * READ_WIDTH * 16);
    const char* const only = std::getenv("OPENGL_STATE_SEED");
    const unsigned first = only != nullptr ? static_cast<unsigned>(std::atoi(only)) : 0;
    const unsigned end = only != nullptr ? first + 1 : 1000;
    unsigned drawn = 0;
    for (unsigned seed = first; seed < end && !HasFailure(); ++seed) {
        SCOPED_TRACE("OPENGL_STATE_SEED=" + std::to_string(seed));
        const RandomState::Expectation expected = application.set(seed);
        const auto before = dump.read(expected.rebinds);
        application.raiseError(expected);

        const bool mayDraw = saved.save(16, 16);
        EXPECT_EQ(mayDraw, expected.draws);
        bool isUploaded = drawn > 0;
        bool isRead = false;
        if (mayDraw) {
            layer.draw(saved, seed);
            if (drawn == 0 || seed % 3 == 0) {
                const bool uploads = saved.prepareUpload();
                EXPECT_EQ(uploads, expected.uploads);
                if (uploads) {
                    overlay.upload();
                    isUploaded = true;
                }
            }
            overlay.draw();
            drawn += isUploaded ? 1 : 0;
            isRead = seed % 4 != 0 && saved.prepareRead();
            if (isRead) {
                gl.readPixels(0, 0, READ_WIDTH, 16, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
            }
            saved.restore();
        }
        EXPECT_EQ(getError(), expected.pendingError);
        EXPECT_EQ(getError(), GLenum{GL_NO_ERROR});
        EXPECT_EQ(StateDump::compare(before, dump.read(expected.rebinds)), "");
        if (isRead && isUploaded && expected.isVisible) {
            EXPECT_TRUE(isExpected(pixels))
                << testing::PrintToString(std::vector<int>(pixels.begin(), pixels.begin() + 4));
        }
        application.end();
    }
    EXPECT_GT(drawn, (end - first) / 2);
}
