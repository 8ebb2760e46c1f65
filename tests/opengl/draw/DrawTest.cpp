// The primitives against the software layer's on every kind of context, and what a frame that shows nothing
// new does not do.

#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "opengl/draw/Allocations.h"
#include "opengl/draw/AppPicture.h"
#include "opengl/draw/GlStage.h"
#include "opengl/draw/PictureDifference.h"
#include "software/Png.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using Drawers = std::vector<std::unique_ptr<drawer::Drawer>>;

constexpr float NOT_A_NUMBER = std::numeric_limits<float>::quiet_NaN();
constexpr float INFINITE = std::numeric_limits<float>::infinity();

struct Size {
    std::uint32_t width;
    std::uint32_t height;
};
constexpr Size SIZES[] = {{1280, 720}, {720, 1280}, {320, 200}};

template <class DrawerType>
DrawerType& add(Drawers& drawers, std::unique_ptr<DrawerType> drawer, glm::vec2 position, glm::vec2 size) {
    DrawerType& added = *drawer;
    added.mPosition = position;
    added.mSize = size;
    drawers.push_back(std::move(drawer));
    return added;
}

/// A graph that is level, rises steeply, jumps up and down, leaves its rectangle and is no number in places.
void addGraph(scene::PrimitiveFactory& factory, Drawers& drawers, glm::vec2 position, float roughness) {
    const glm::vec2 size(0.28F, 0.2F);
    auto& grid = add(drawers, factory.createGrid(factory.createMesh(scene::Topology::LINES)), position, size);
    grid.mMesh->mColor = {1.0F, 1.0F, 1.0F, 0.2F};
    auto& fill = add(drawers, factory.createMesh(scene::Topology::TRIANGLE_STRIP), position, size);
    auto& line = add(drawers, factory.createMesh(scene::Topology::LINE_STRIP), position, size);
    fill.mColor = {0.0F, 0.52F, 1.0F, 0.5F};
    line.mColor = {0.0F, 0.52F, 1.0F, 1.0F};
    constexpr int SAMPLES = 100;
    for (int i = 0; i < SAMPLES; ++i) {
        const auto at = static_cast<float>(i);
        const float x = 2.0F * at / (SAMPLES - 1) - 1.0F;
        const float level = i < 20 ? 0.9F : 0.5F * std::sin(at * 0.1F);
        const float y = level + roughness * std::sin(at * at);
        fill.mVertices.push_back({x, y});
        fill.mVertices.push_back({x, 1.0F});
        line.mVertices.push_back({x, y});
    }
}

Drawers makeScene(scene::PrimitiveFactory& factory) {
    Drawers drawers;
    add(drawers, factory.createRect(), {0.031F, 0.033F}, {0.9F, 0.57F}).mColor = {0.0F, 0.0F, 0.0F, 0.5F};
    addGraph(factory, drawers, {0.0413F, 0.1F}, 0.0F);
    addGraph(factory, drawers, {0.3417F, 0.1F}, 0.05F);
    addGraph(factory, drawers, {0.6421F, 0.1F}, 0.5F);
    const char* const texts[] = {"FPS 59.9", "CPU 43%", "gjpqy@#(16.6ms)", "SysFree 3.7GB"};
    for (int i = 0; i < 4; ++i) {
        const auto place = static_cast<float>(i);
        auto& text = add(drawers, factory.createText(), {0.04F + 0.2131F * place, 0.31F + 0.003F * place},
                         {0.17F, 0.05F - 0.006F * place});
        text.setText(texts[i]);
        text.setTextColor({1.0F, 0.45F + 0.1F * place, 0.0F, 1.0F - 0.2F * place});
    }
    add(drawers, factory.createThumbnail(), {0.0507F, 0.4F}, {0.151F, 0.151F});
    auto& over = add(drawers, factory.createRect(), {0.0611F, 0.42F}, {0.05F, 0.02F});
    over.mColor = {0.0F, 0.4F, 0.0F, 0.7F};
    return drawers;
}

/// The clip cuts glyphs and graphs.
void drawScene(scene::PrimitiveFactory& factory, const Drawers& drawers, bool isClipped) {
    if (isClipped) {
        factory.setClip({0.05F, 0.12F}, {0.5F, 0.21F});
    }
    for (const auto& drawer : drawers) {
        drawer->draw();
    }
    factory.clearClip();
}

class Draw : public testing::TestWithParam<GlStage::Api> {
protected:
    std::unique_ptr<GlStage> stage(const Size& size, bool isSrgb = false) {
        return GlStage::create(GetParam().name, size.width, size.height, isSrgb);
    }
};

TEST_P(Draw, LooksAsTheSoftwareLayer) {
    for (const Size& size : SIZES) {
        for (const bool isClipped : {false, true}) {
            SCOPED_TRACE(std::to_string(size.width) + (isClipped ? " clipped" : " whole"));
            software::Surface surface(size.width, size.height);
            software::SoftwareFactory factory(surface);
            const Drawers expected = makeScene(factory);
            paintBlocks(surface.mImage);
            surface.beginOverlay();
            drawScene(factory, expected, isClipped);

            const auto made = stage(size);
            ASSERT_NE(made, nullptr);
            drawlist::DrawListFactory& glFactory = made->drawing().factory();
            const Drawers drawers = makeScene(glFactory);
            made->paintBlocks();
            ASSERT_TRUE(made->show([&] {
                glFactory.beginDrawing(false);
                drawScene(glFactory, drawers, isClipped);
            }));
            const software::Image picture = made->read();
            const PictureDifference difference = comparePictures(surface.mImage, picture);
            EXPECT_LE(difference.largestInside, LARGEST_INSIDE);
            EXPECT_LE(difference.largestAtEdges, LARGEST_AT_JUMPS);
            EXPECT_LE(difference.meanAtEdges, LARGEST_MEAN_AT_JUMPS);
            if (HasFailure()) {
                std::string error;
                software::writePng(surface.mImage, "draw-expected.png", error);
                software::writePng(picture, "draw-drawn.png", error);
            }
        }
    }
}

int uploads = 0;
int drawCalls = 0;
opengl::Functions real;

void APIENTRY countBufferData(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
    ++uploads;
    real.bufferData(target, size, data, usage);
}
void APIENTRY countBufferSubData(GLenum target, GLintptr offset, GLsizeiptr size, const void* data) {
    ++uploads;
    real.bufferSubData(target, offset, size, data);
}
void APIENTRY countTexImage2D(GLenum target, GLint level, GLint stored, GLsizei width, GLsizei height,
                              GLint border, GLenum format, GLenum type, const void* pixels) {
    ++uploads;
    real.texImage2D(target, level, stored, width, height, border, format, type, pixels);
}
void APIENTRY countTexSubImage2D(GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height,
                                 GLenum format, GLenum type, const void* pixels) {
    ++uploads;
    real.texSubImage2D(target, level, x, y, width, height, format, type, pixels);
}
void APIENTRY countDrawArrays(GLenum mode, GLint first, GLsizei count) {
    ++drawCalls;
    real.drawArrays(mode, first, count);
}

TEST_P(Draw, AFrameWithNothingNewUploadsAndAllocatesNothing) {
    const auto made = stage(SIZES[0]);
    ASSERT_NE(made, nullptr);
    opengl::Functions& functions = made->functions();
    real = functions;
    functions.bufferData = countBufferData;
    functions.bufferSubData = countBufferSubData;
    functions.texImage2D = countTexImage2D;
    functions.texSubImage2D = countTexSubImage2D;
    functions.drawArrays = countDrawArrays;

    drawlist::DrawListFactory& factory = made->drawing().factory();
    const Drawers drawers = makeScene(factory);
    bool isSame = false;
    const std::function<void()> draw = [&] {
        if (factory.beginDrawing(isSame)) {
            drawScene(factory, drawers, false);
        }
    };
    for (int i = 0; i < 2; ++i) {
        made->paintBlocks();
        ASSERT_TRUE(made->show(draw));
    }
    EXPECT_GT(uploads, 0);
    const software::Image first = made->read();

    // Drawn anew, it comes out as it was. Shown again, nothing is asked for.
    for (const bool isAgain : {false, true}) {
        SCOPED_TRACE(isAgain ? "shown again" : "drawn anew");
        isSame = isAgain;
        made->paintBlocks();
        uploads = drawCalls = 0;
        countAllocations(true);
        const bool isShown = made->show(draw);
        const int allocations = countAllocations(false);
        EXPECT_TRUE(isShown);
        EXPECT_EQ(uploads, 0);
        EXPECT_EQ(drawCalls, 3);
        EXPECT_EQ(allocations, 0);
        EXPECT_EQ(first.mPixels, made->read().mPixels);
    }
}

// What is as before is taken over from the drawing before; everything else must show.
TEST_P(Draw, WhateverChangesShows) {
    struct Pair {
        std::unique_ptr<drawer::TextDrawer> text;
        std::unique_ptr<drawer::MeshDrawer> mesh;
    };
    const auto make = [](drawlist::DrawListFactory& factory) {
        Pair pair{factory.createText(), factory.createMesh(scene::Topology::TRIANGLE_STRIP)};
        pair.text->setText("Kept 48");
        pair.text->mPosition = {0.1F, 0.1F};
        pair.text->mSize = {0.6F, 0.2F};
        pair.mesh->mVertices = {{-1.0F, 1.0F}, {-1.0F, 0.2F}, {1.0F, 1.0F}, {1.0F, -0.4F}};
        pair.mesh->mPosition = {0.1F, 0.4F};
        pair.mesh->mSize = {0.6F, 0.3F};
        pair.text->mTextColor = pair.mesh->mColor = glm::vec4(1.0F);
        return pair;
    };
    bool isClipped = false;
    const std::vector<std::function<void(Pair&)>> changes = {
        [](Pair& pair) { pair.text->mTextColor.r = pair.mesh->mColor.r = 0.2F; },
        [](Pair& pair) { pair.text->setText("Kept 49"); },
        [](Pair& pair) { pair.text->setTextGravity(gui::TextGravity::RIGHT); },
        [](Pair& pair) { pair.text->setTextSizeHint(20); },
        [](Pair& pair) { pair.text->setTextEllipsize(gui::TextEllipsize::START); },
        [](Pair& pair) { pair.text->mTranslation.x = pair.mesh->mTranslation.y = 0.1F; },
        [](Pair& pair) { pair.mesh->mVertices[3].y = -0.9F; },
        [](Pair& pair) { pair.text->mSize.x = pair.mesh->mSize.x = 0.3F; },
        [&](Pair&) { isClipped = true; },
    };
    const auto show = [&](GlStage& made, const Pair& pair) {
        made.context().makeCurrent();
        made.paintBlocks();
        return made.show([&] {
            drawlist::DrawListFactory& factory = made.drawing().factory();
            factory.beginDrawing(false);
            if (isClipped) {
                factory.setClip({0.0F, 0.0F}, {0.3F, 1.0F});
            }
            pair.text->draw();
            pair.mesh->draw();
            factory.clearClip();
        });
    };
    const auto kept = stage(SIZES[2]);
    ASSERT_NE(kept, nullptr);
    Pair changed = make(kept->drawing().factory());
    ASSERT_TRUE(show(*kept, changed));
    for (std::size_t i = 0; i < changes.size(); ++i) {
        changes[i](changed);
        ASSERT_TRUE(show(*kept, changed));
        const software::Image picture = kept->read();
        const auto fresh = stage(SIZES[2]);
        Pair anew = make(fresh->drawing().factory());
        for (std::size_t k = 0; k <= i; ++k) {
            changes[k](anew);
        }
        ASSERT_TRUE(show(*fresh, anew));
        EXPECT_EQ(picture.mPixels, fresh->read().mPixels) << "after change " << i;
    }
}

TEST_P(Draw, SurvivesValuesThatAreNoNumbers) {
    const auto made = stage(SIZES[2]);
    ASSERT_NE(made, nullptr);
    drawlist::DrawListFactory& factory = made->drawing().factory();
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
        const drawlist::Batch& batch = made->drawing().list().batch;
        for (std::size_t k = 0; k < batch.vertexCount(); ++k) {
            const drawlist::Vertex& vertex = batch.vertices()[k];
            ASSERT_TRUE(vertex.x >= 0.0F && vertex.x <= 320.0F && vertex.y >= 0.0F && vertex.y <= 200.0F)
                << i << ": " << vertex.x << ", " << vertex.y;
        }
    }
}

TEST_P(Draw, TakesNoNamesThatAProgramMayChoose) {
    const auto made = stage(SIZES[2]);
    ASSERT_NE(made, nullptr);
    drawlist::DrawListFactory& factory = made->drawing().factory();
    const Drawers drawers = makeScene(factory);
    ASSERT_TRUE(made->show([&] {
        factory.beginDrawing(false);
        drawScene(factory, drawers, false);
    }));
    const opengl::Functions& gl = made->functions();
    for (GLuint name = 1; name < 1000 && !gl.version.isCore; ++name) {
        ASSERT_FALSE(gl.isTexture(name) || gl.isBuffer(name)) << name;
    }
}

TEST_P(Draw, AFullGlyphTextureIsEmptiedForTheNextDrawing) {
    const auto made = stage(SIZES[2]);
    ASSERT_NE(made, nullptr);
    drawlist::DrawListFactory& factory = made->drawing().factory();
    const auto text = factory.createText();
    text->mPosition = {0.1F, 0.1F};
    text->setText("Mg8");
    text->setTextColor(glm::vec4(1.0F));
    const auto drawAt = [&](float height) {
        text->mSize = {0.8F, height};
        made->paintBlocks();
        return made->show([&] {
            factory.beginDrawing(false);
            text->draw();
        });
    };
    ASSERT_TRUE(drawAt(0.3F));
    const software::Image first = made->read();
    int fullDrawings = 0;
    for (int i = 0; i < 60; ++i) {
        ASSERT_TRUE(drawAt(0.3F + 0.01F * static_cast<float>(i)));
        fullDrawings += made->drawing().list().glyphs.isFull() ? 1 : 0;
    }
    EXPECT_GT(fullDrawings, 0);
    ASSERT_TRUE(drawAt(0.3F));
    ASSERT_TRUE(drawAt(0.3F));
    EXPECT_EQ(first.mPixels, made->read().mPixels);
}

// Opaque colours must come out alike whether or not the surface stores sRGB.
TEST_P(Draw, ColoursAreTheSameOnAnSrgbSurface) {
    const auto made = stage(SIZES[2], true);
    if (made == nullptr) {
        GTEST_SKIP() << "no such surface";
    }
    drawlist::DrawListFactory& factory = made->drawing().factory();
    const auto rect = factory.createRect();
    rect->mSize = {1.0F, 1.0F};
    rect->mColor = {0.2F, 0.52F, 0.8F, 1.0F};
    ASSERT_TRUE(made->show([&] {
        factory.beginDrawing(false);
        rect->draw();
    }));
    const software::Pixel pixel = made->read().row(100)[100];
    EXPECT_NEAR(pixel.mRed, 51, 1);
    EXPECT_NEAR(pixel.mGreen, 133, 1);
    EXPECT_NEAR(pixel.mBlue, 204, 1);
}

INSTANTIATE_TEST_SUITE_P(Apis, Draw, testing::ValuesIn(GlStage::APIS),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace
