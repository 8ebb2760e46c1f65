#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "opengl/context/HeadlessContext.h"
#include "opengl/draw/OverlayDrawing.h"
#include "opengl/gl/SavedState.h"
#include "opengl/state/RandomState.h"
#include "opengl/state/StateDump.h"

#include <gmock/gmock.h>

#include <cstdlib>

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
        options.width = 64;
        options.height = 32;
        for (std::string word; words >> word;) {
            options.samples = word == "multisample" ? 4 : options.samples;
            options.srgb = options.srgb || word == "srgb";
            options.debug = options.debug || word == "debug";
            hasVertexArrays = hasVertexArrays && word != "no-vertex-arrays";
        }
    }
};

constexpr int WIDTH = 64;
constexpr int HEIGHT = 32;
/// Of the surface, the odd column at the right left out, so that rows end off any alignment.
constexpr int READ_WIDTH = WIDTH - 1;

using Pixels = std::vector<std::uint8_t>;

/// The layer's drawing: the application's picture, something opaque over everything, and on it something
/// translucent and a text. All of it is made and uploaded anew now and then.
class LayerOverlay {
public:
    explicit LayerOverlay(const Functions& gl)
        : mGl(gl),
          mDrawing(gl),
          mPicture(mDrawing.factory().createThumbnail()),
          mGround(mDrawing.factory().createRect()),
          mGlass(mDrawing.factory().createRect()),
          mText(mDrawing.factory().createText()) {
        mDrawing.setSurface(WIDTH, HEIGHT, false);
        mPicture->mSize = mGround->mSize = {1.0F, 1.0F};
        mGlass->mSize = mText->mSize = {1.0F, 0.5F};
        mGround->mColor = {0.0F, 0.5F, 0.75F, 1.0F};
        mGlass->mColor = {1.0F, 0.0F, 0.0F, 0.5F};
        mText->setText("g8@");
        mText->setTextColor({1.0F, 1.0F, 0.0F, 0.8F});
    }

    /// Between save() and restore(). Whether it could be drawn; what was there then, if it could be read.
    bool draw(SavedState& saved, unsigned seed, Pixels& pixels) {
        if (mIsCreated && seed % 8 == 7) {
            mDrawing.destroy();
            mIsCreated = false;
        }
        if (!mIsCreated) {
            EXPECT_EQ(mDrawing.create(), "");
            mIsCreated = true;
        }
        // Which this renderer does without, though others do not.
        EXPECT_FALSE(!mGl.version.isEs && mGl.isEnabled(GL_POLYGON_SMOOTH));
        if (seed % 2 == 0) {
            mDrawing.factory().beginDrawing(false);
            mPicture->draw();
            mGround->draw();
            mGlass->draw();
            mText->draw();
        }
        const bool isDrawn = mDrawing.show(saved);
        pixels.clear();
        if (seed % 4 != 1 && saved.prepareRead()) {
            pixels.resize(std::size_t{4} * READ_WIDTH * HEIGHT);
            mGl.readPixels(0, 0, READ_WIDTH, HEIGHT, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        }
        return isDrawn;
    }

private:
    const Functions& mGl;
    opengl::OverlayDrawing mDrawing;
    std::unique_ptr<drawer::Drawer> mPicture;
    std::unique_ptr<drawer::RectDrawer> mGround, mGlass;
    std::unique_ptr<drawer::TextDrawer> mText;
    bool mIsCreated = false;
};

int largestDifference(const Pixels& a, const Pixels& b) {
    int largest = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        largest = std::max(largest, std::abs(a[i] - b[i]));
    }
    return largest;
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

    LayerOverlay overlay(gl);
    SavedState saved(gl);
    Pixels usual;
    ASSERT_TRUE(saved.save(WIDTH, HEIGHT) && overlay.draw(saved, 0, usual));
    saved.restore();
    ASSERT_GT(largestDifference(usual, Pixels(usual.size(), usual[0])), 100) << "the text is there";
    RandomState application(*context, *other, gl);
    ASSERT_EQ(getError(), GLenum{GL_NO_ERROR});
    const StateDump dump;
    const char* const only = std::getenv("OPENGL_STATE_SEED");
    const unsigned first = only != nullptr ? static_cast<unsigned>(std::atoi(only)) : 0;
    const unsigned end = only != nullptr ? first + 1 : 1000;
    unsigned drawn = 0;
    for (unsigned seed = first; seed < end && !HasFailure(); ++seed) {
        SCOPED_TRACE("OPENGL_STATE_SEED=" + std::to_string(seed));
        const RandomState::Expectation expected = application.set(seed, dump);
        const auto before = dump.read(expected.rebinds);
        application.raiseError(expected);

        const bool mayDraw = saved.save(WIDTH, HEIGHT);
        EXPECT_EQ(mayDraw, expected.draws);
        EXPECT_EQ(mayDraw, saved.obstacle() == nullptr);
        Pixels pixels;
        bool isDrawn = false;
        if (mayDraw) {
            isDrawn = overlay.draw(saved, seed, pixels);
            EXPECT_TRUE(isDrawn || !expected.uploads) << saved.obstacle();
            if (seed % 3 == 0) {
                EXPECT_EQ(saved.prepareUpload(), expected.uploads);
            }
            drawn += isDrawn ? 1 : 0;
            saved.restore();
        }
        EXPECT_EQ(getError(), expected.pendingError);
        EXPECT_EQ(getError(), GLenum{GL_NO_ERROR});
        EXPECT_EQ(StateDump::compare(before, dump.read(expected.rebinds)), "");
        if (isDrawn && expected.isVisible) {
            EXPECT_LE(largestDifference(pixels, usual), 1);
        }
        application.end();
    }
    EXPECT_GT(drawn, (end - first) / 2);
}
