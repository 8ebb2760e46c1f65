// The primitives against the software layer's on every kind of context, and what a frame that shows nothing
// new does not do.

#include "bench/Allocations.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "opengl/context/HeadlessContext.h"
#include "opengl/draw/OverlayDrawing.h"
#include "opengl/gl/SavedState.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"
#include "support/PictureDifference.h"
#include "support/PrimitiveScene.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <ctime>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using support::drawScene;
using support::makeScene;
using Drawers = support::Primitives;

/// Milliseconds that the library's monotonic clock shows; 0: the real one.
long monotonicTime = 0;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float INFINITE = std::numeric_limits<float>::infinity();

struct Size {
    std::uint32_t width;
    std::uint32_t height;
};
constexpr Size SIZES[] = {{1280, 720}, {720, 1280}, {320, 200}};

struct Kind {
    const char* name;
    HeadlessContext::Api api;
    int major, minor;
    bool isPlain;  ///< of what later versions have, nothing is used
    bool hasDepth = true;
};

opengl::Functions functionsFor(const HeadlessContext& context, bool isPlain) {
    opengl::Functions functions = context.functions();
    for (bool opengl::Features::*feature :
         {&opengl::Features::vertexArrays, &opengl::Features::redGreenTextures,
          &opengl::Features::textureSwizzle, &opengl::Features::softwareRaster,
          &opengl::Features::readFramebuffers}) {
        functions.features.*feature = functions.features.*feature && !isPlain;
    }
    return functions;
}

/// A context with the overlay's drawing in it.
struct Stage {
    /// Draws the primitives of a frame.
    using Drawing = std::function<void(drawlist::DrawListFactory&)>;

    explicit Stage(std::unique_ptr<HeadlessContext> made, bool isPlain)
        : context(std::move(made)),
          gl(functionsFor(*context, isPlain)),
          state(gl),
          drawing(gl),
          factory(drawing.factory()) {}

    /// The application's picture: blocks through which what is translucent shows.
    void paint() const {
        const auto clear = reinterpret_cast<PFNGLCLEARPROC>(context->getProcAddress("glClear"));
        const auto clearColor =
            reinterpret_cast<PFNGLCLEARCOLORPROC>(context->getProcAddress("glClearColor"));
        gl.enable(GL_SCISSOR_TEST);
        for (int block = 0; block < 20 * 12; ++block) {
            const int column = block % 20;
            const int row = block / 20;
            const float shade = 0.1F + 0.04F * static_cast<float>(row);
            const bool isLight = (row + column) % 3 == 0;
            gl.scissor(context->width() * column / 20, context->height() * row / 12,
                       context->width() / 20 + 1, context->height() / 12 + 1);
            clearColor(isLight ? 0.6F : shade, isLight ? 0.5F : shade, isLight ? shade : 0.4F, 1.0F);
            clear(GL_COLOR_BUFFER_BIT);
        }
        gl.disable(GL_SCISSOR_TEST);
    }

    /// The application's picture, and over it what `draw` draws anew. False when it could not be shown.
    bool show(const Drawing& draw, bool isSame = false) {
        context->makeCurrent();
        paint();
        allocations = bench::allocations();
        drawing.setSurface(context->width(), context->height(), isSrgb);
        bool isShown = state.save(context->width(), context->height());
        if (isShown) {
            if (factory.beginDrawing(isSame)) {
                draw(factory);
            }
            isShown = drawing.show(state);
            state.restore();
        }
        allocations = bench::allocations() - allocations;
        return isShown;
    }

    software::Image read() const {
        software::Image image(static_cast<std::uint32_t>(context->width()),
                              static_cast<std::uint32_t>(context->height()));
        const std::vector<std::uint8_t> pixels = context->readPixels();
        std::memcpy(image.mPixels.data(), pixels.data(), pixels.size());
        return image;
    }

    std::unique_ptr<HeadlessContext> context;
    opengl::Functions gl;  ///< what the drawing calls; a test may put others in their place
    opengl::SavedState state;
    opengl::OverlayDrawing drawing;
    drawlist::DrawListFactory& factory;
    bool isSrgb = false;
    std::size_t allocations = 0;  ///< of the last frame
};

class Draw : public testing::TestWithParam<Kind> {
protected:
    ~Draw() override { monotonicTime = 0; }

    /// Null without such a context.
    static std::unique_ptr<Stage> stage(const Size& size, bool isSrgb = false) {
        HeadlessContext::Options options;
        options.api = GetParam().api;
        options.major = GetParam().major;
        options.minor = GetParam().minor;
        options.width = static_cast<int>(size.width);
        options.height = static_cast<int>(size.height);
        options.srgb = isSrgb;
        options.hasDepth = GetParam().hasDepth;
        auto context = HeadlessContext::create(options);
        EXPECT_TRUE(context != nullptr || isSrgb);
        if (context == nullptr) {
            return nullptr;
        }
        auto made = std::make_unique<Stage>(std::move(context), GetParam().isPlain);
        made->isSrgb = isSrgb;
        EXPECT_TRUE(made->state.save(options.width, options.height));
        EXPECT_EQ(made->drawing.create(), "");
        made->state.restore();
        return made;
    }
};

TEST_P(Draw, LooksAsTheSoftwareLayer) {
    for (const Size& size : SIZES) {
        for (const bool isClipped : {false, true}) {
            SCOPED_TRACE(std::to_string(size.width) + (isClipped ? " clipped" : " whole"));
            software::Surface surface(size.width, size.height);
            software::SoftwareFactory factory(surface);
            const auto made = stage(size);
            made->paint();
            surface.mImage = made->read();
            const Drawers expected = makeScene(factory);
            surface.beginOverlay();
            drawScene(factory, expected, isClipped);
            const Drawers drawers = makeScene(made->factory);
            ASSERT_TRUE(made->show([&](auto& list) { drawScene(list, drawers, isClipped); }));
            const PictureDifference difference = comparePictures(surface.mImage, made->read());
            EXPECT_LE(difference.largestInside, LARGEST_INSIDE);
            EXPECT_LE(difference.largestAtEdges, LARGEST_AT_EDGES);
            EXPECT_LE(difference.meanAtEdges, LARGEST_MEAN_AT_EDGES);
        }
    }
}

int uploads = 0;
int copies = 0;
int drawCalls = 0;
opengl::Functions real;

template <auto MEMBER, int& COUNT, class... Arguments>
void count(opengl::Functions& functions, void (APIENTRY* opengl::Functions::*)(Arguments...)) {
    if (functions.*MEMBER != nullptr) {
        functions.*MEMBER = [](Arguments... arguments) {
            ++COUNT;
            (real.*MEMBER)(arguments...);
        };
    }
}

void countCalls(opengl::Functions& functions) {
    using opengl::Functions;
    real = functions;
    count<&Functions::bufferData, uploads>(functions, &Functions::bufferData);
    count<&Functions::bufferSubData, uploads>(functions, &Functions::bufferSubData);
    count<&Functions::texImage2D, uploads>(functions, &Functions::texImage2D);
    count<&Functions::texSubImage2D, uploads>(functions, &Functions::texSubImage2D);
    count<&Functions::copyTexSubImage2D, copies>(functions, &Functions::copyTexSubImage2D);
    count<&Functions::blitFramebuffer, copies>(functions, &Functions::blitFramebuffer);
    count<&Functions::drawArrays, drawCalls>(functions, &Functions::drawArrays);
}

TEST_P(Draw, AFrameWithNothingNewUploadsAndAllocatesNothing) {
    const auto made = stage(SIZES[0]);
    countCalls(made->gl);
    const Drawers drawers = makeScene(made->factory);
    const Stage::Drawing draw = [&](auto& factory) { drawScene(factory, drawers, false); };
    monotonicTime = 1;
    EXPECT_TRUE(made->show(draw) && made->show(draw));
    EXPECT_GT(uploads, 0);
    const software::Image first = made->read();

    // Drawn anew, it comes out as it was. Shown again, nothing is asked for.
    for (const bool isAgain : {false, true}) {
        SCOPED_TRACE(isAgain ? "shown again" : "drawn anew");
        uploads = copies = drawCalls = 0;
        EXPECT_TRUE(made->show(draw, isAgain));
        EXPECT_EQ(made->allocations, 0);
        EXPECT_EQ(uploads, 0);
        EXPECT_EQ(copies, 0);
        EXPECT_EQ(drawCalls, 3);
        EXPECT_EQ(first.mPixels, made->read().mPixels);
    }
}

// A copy is a round through a GPU's memory.
TEST_P(Draw, TheApplicationsPictureIsTakenTwiceASecondWhileItIsShown) {
    const auto made = stage(SIZES[2]);
    countCalls(made->gl);
    const auto thumbnail = made->factory.createThumbnail();
    const auto rect = made->factory.createRect();
    thumbnail->mSize = rect->mSize = {0.2F, 0.2F};
    rect->mColor = glm::vec4(1.0F);
    monotonicTime = 1;
    const auto copiesOfTwoSeconds = [&](drawer::Drawer& drawer) {
        copies = 0;
        for (int frame = 0; frame < 20; ++frame) {
            EXPECT_TRUE(made->show([&](auto&) { drawer.draw(); }, frame % 3 != 0));
            monotonicTime += 100;
        }
        return copies;
    };
    EXPECT_EQ(copiesOfTwoSeconds(*thumbnail), 4);
    EXPECT_EQ(copiesOfTwoSeconds(*rect), 0);
    EXPECT_EQ(copiesOfTwoSeconds(*thumbnail), 4);
}

std::vector<drawlist::Vertex> verticesOf(const drawlist::Batch& batch) {
    std::vector<drawlist::Vertex> vertices(batch.vertexCount());
    batch.copyVertices(vertices.data());
    return vertices;
}

/// A text and a mesh on a list of their own.
struct RetainedDrawing {
    drawlist::DrawList list;
    drawlist::DrawListFactory factory{list};
    std::unique_ptr<drawer::TextDrawer> text = factory.createText();
    std::unique_ptr<drawer::MeshDrawer> mesh = factory.createMesh(scene::Topology::TRIANGLE_STRIP);
    bool isClipped = false;

    RetainedDrawing() {
        list.setSize(320, 200);
        text->setText("Kept 48");
        text->mPosition = {0.1F, 0.1F};
        text->mSize = {0.6F, 0.2F};
        mesh->mVertices = {{-1.0F, 1.0F}, {-1.0F, 0.2F}, {1.0F, 1.0F}, {1.0F, -0.4F}};
        mesh->mPosition = {0.1F, 0.4F};
        mesh->mSize = {0.6F, 0.3F};
        text->mTextColor = mesh->mColor = glm::vec4(1.0F);
    }

    /// The bytes of what it draws.
    std::string draw() {
        factory.beginDrawing(false);
        if (isClipped) {
            factory.setClip({0.0F, 0.0F}, {0.3F, 1.0F});
        }
        text->draw();
        mesh->draw();
        factory.clearClip();
        const std::vector<drawlist::Vertex> vertices = verticesOf(list.batch);
        return {reinterpret_cast<const char*>(vertices.data()), vertices.size() * sizeof(drawlist::Vertex)};
    }
};

// What is as before is taken over from the drawing before; everything else must show.
TEST(DrawList, WhateverChangesShows) {
    void (*const changes[])(RetainedDrawing&) = {
        [](RetainedDrawing& kept) { kept.text->mTextColor.r = kept.mesh->mColor.r = 0.2F; },
        [](RetainedDrawing& kept) { kept.text->setText("Kept 84"); },
        [](RetainedDrawing& kept) { kept.text->setTextGravity(gui::TextGravity::RIGHT); },
        [](RetainedDrawing& kept) { kept.text->setTextSizeHint(20); },
        [](RetainedDrawing& kept) { kept.text->setTextEllipsize(gui::TextEllipsize::START); },
        [](RetainedDrawing& kept) { kept.text->mTranslation.x = kept.mesh->mTranslation.y = 0.1F; },
        [](RetainedDrawing& kept) { kept.mesh->mVertices[3].y = -0.9F; },
        [](RetainedDrawing& kept) { kept.text->mSize.x = kept.mesh->mSize.x = 0.3F; },
        [](RetainedDrawing& kept) { kept.isClipped = true; },
    };
    RetainedDrawing kept;
    kept.draw();
    for (const auto& change : changes) {
        change(kept);
        const std::string drawn = kept.draw();
        kept.factory.beginDrawing(false);  // which leaves nothing to take over
        EXPECT_EQ(drawn, kept.draw()) << "after change " << &change - changes;
    }
}

TEST(DrawList, SurvivesValuesThatAreNoNumbers) {
    drawlist::DrawList list;
    list.setSize(320, 200);
    drawlist::DrawListFactory factory(list);
    const Drawers drawers = makeScene(factory);
    const float odd[] = {NOT_A_NUMBER, INFINITE, -INFINITE, 1e30F, -1e30F};
    for (int i = 0; i < 40; ++i) {
        for (const auto& drawer : drawers) {
            if (auto* const mesh = dynamic_cast<drawer::MeshDrawer*>(drawer.get())) {
                gui::Vertex& vertex =
                    mesh->mVertices[static_cast<std::size_t>(i * 37) % mesh->mVertices.size()];
                (i % 2 == 0 ? vertex.x : vertex.y) = odd[i % 5];
            }
            drawer->mPosition[i % 2] = i % 3 == 0 ? odd[i % 5] : drawer->mPosition[i % 2];
        }
        factory.beginDrawing(false);
        drawScene(factory, drawers, i % 4 == 0);
        for (const drawlist::Vertex& vertex : verticesOf(list.batch)) {
            ASSERT_TRUE(vertex.x >= 0.0F && vertex.x <= 320.0F && vertex.y >= 0.0F && vertex.y <= 200.0F)
                << i << ": " << vertex.x << ", " << vertex.y;
        }
    }
}

TEST_P(Draw, TakesNoNamesThatAProgramMayChoose) {
    const auto made = stage(SIZES[2]);
    const Drawers drawers = makeScene(made->factory);
    ASSERT_TRUE(made->show([&](auto& factory) { drawScene(factory, drawers, false); }));
    const opengl::Functions& gl = made->gl;
    for (GLuint name = 1; name < 1000 && !gl.version.isCore; ++name) {
        ASSERT_FALSE(gl.isTexture(name) || gl.isBuffer(name) || gl.isFramebuffer(name)) << name;
    }
}

TEST_P(Draw, AFullGlyphTextureIsEmptiedForTheNextDrawing) {
    const auto made = stage(SIZES[2]);
    const auto text = made->factory.createText();
    text->mPosition = {0.1F, 0.1F};
    text->setText("Mg8");
    text->setTextColor(glm::vec4(1.0F));
    const auto drawAt = [&](float height) {
        text->mSize = {0.8F, height};
        EXPECT_TRUE(made->show([&](auto&) { text->draw(); }));
        return made->drawing.list().glyphs.isFull() ? 1 : 0;
    };
    drawAt(0.3F);
    const software::Image first = made->read();
    int fullDrawings = 0;
    for (int i = 0; i < 60; ++i) {
        fullDrawings += drawAt(0.3F + 0.01F * static_cast<float>(i));
    }
    EXPECT_GT(fullDrawings, 0);
    drawAt(0.3F);
    drawAt(0.3F);
    EXPECT_EQ(first.mPixels, made->read().mPixels);
}

// Opaque colours must come out alike whether or not the surface stores sRGB.
TEST_P(Draw, ColoursAreTheSameOnAnSrgbSurface) {
    const auto made = stage(SIZES[2], true);
    if (made == nullptr) {
        GTEST_SKIP() << "no such surface";
    }
    const auto rect = made->factory.createRect();
    rect->mSize = {1.0F, 1.0F};
    rect->mColor = {0.2F, 0.52F, 0.8F, 1.0F};
    ASSERT_TRUE(made->show([&](auto&) { rect->draw(); }));
    const software::Pixel pixel = made->read().row(100)[100];
    EXPECT_NEAR(pixel.red, 51, 1);
    EXPECT_NEAR(pixel.green, 133, 1);
    EXPECT_NEAR(pixel.blue, 204, 1);
}

const Kind KINDS[] = {
    {"gl2", HeadlessContext::Api::COMPATIBILITY, 2, 1, true},
    {"gl4", HeadlessContext::Api::COMPATIBILITY, 3, 2, false},
    {"core", HeadlessContext::Api::CORE, 3, 2, false},
    // llvmpipe fills rectangles in another way then.
    {"withoutDepth", HeadlessContext::Api::CORE, 3, 2, false, false},
    {"es2", HeadlessContext::Api::ES, 2, 0, true},
    {"es3", HeadlessContext::Api::ES, 3, 0, false},
};

INSTANTIATE_TEST_SUITE_P(Kinds, Draw, testing::ValuesIn(KINDS),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock == CLOCK_MONOTONIC && monotonicTime != 0) {
        *time = {monotonicTime / 1000, monotonicTime % 1000 * 1000000};
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
}
