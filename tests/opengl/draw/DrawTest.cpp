// The primitives against the software layer's on every kind of context, and what a frame that shows nothing
// new does not do.

#include "bench/Allocations.h"
#include "drawers/GridDrawer.h"
#include "drawers/MeshDrawer.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "opengl/draw/AppPicture.h"
#include "opengl/draw/GlStage.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"
#include "support/PictureDifference.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cmath>
#include <ctime>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using Drawers = std::vector<std::unique_ptr<drawer::Drawer>>;

/// Milliseconds that the library's monotonic clock shows; 0: the real one.
long monotonicTime = 0;

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
        auto made = GlStage::create(GetParam(), size.width, size.height, isSrgb);
        EXPECT_TRUE(made != nullptr || isSrgb);
        return made;
    }

    ~Draw() override { monotonicTime = 0; }

    /// The application's picture, and over it what `draw` draws anew.
    bool show(GlStage& made, const std::function<void(drawlist::DrawListFactory&)>& draw,
              bool isSame = false) {
        made.context().makeCurrent();
        made.paintBlocks();
        drawlist::DrawListFactory& factory = made.drawing().factory();
        const std::function<void()> frame = [&] {
            if (factory.beginDrawing(isSame)) {
                draw(factory);
            }
        };
        mAllocations = bench::allocations();
        const bool isShown = made.show(frame);
        mAllocations = bench::allocations() - mAllocations;
        return isShown;
    }

    std::size_t mAllocations = 0;  ///< of the last frame
};

TEST_P(Draw, LooksAsTheSoftwareLayer) {
    for (const Size& size : SIZES) {
        for (const bool isClipped : {false, true}) {
            SCOPED_TRACE(std::to_string(size.width) + (isClipped ? " clipped" : " whole"));
            software::Surface surface(size.width, size.height);
            software::SoftwareFactory factory(surface);
            paintBlocks(surface.mImage);
            const Drawers expected = makeScene(factory);
            surface.beginOverlay();
            drawScene(factory, expected, isClipped);

            const auto made = stage(size);
            const Drawers drawers = makeScene(made->drawing().factory());
            ASSERT_TRUE(show(*made, [&](auto& list) { drawScene(list, drawers, isClipped); }));
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
    countCalls(made->functions());
    const Drawers drawers = makeScene(made->drawing().factory());
    const std::function<void(drawlist::DrawListFactory&)> draw = [&](auto& factory) {
        drawScene(factory, drawers, false);
    };
    monotonicTime = 1;
    EXPECT_TRUE(show(*made, draw) && show(*made, draw));
    EXPECT_GT(uploads, 0);
    const software::Image first = made->read();

    // Drawn anew, it comes out as it was. Shown again, nothing is asked for.
    for (const bool isAgain : {false, true}) {
        SCOPED_TRACE(isAgain ? "shown again" : "drawn anew");
        uploads = copies = drawCalls = 0;
        EXPECT_TRUE(show(*made, draw, isAgain));
        EXPECT_EQ(mAllocations, 0);
        EXPECT_EQ(uploads, 0);
        EXPECT_EQ(copies, 0);
        EXPECT_EQ(drawCalls, 3);
        EXPECT_EQ(first.mPixels, made->read().mPixels);
    }
}

// A copy is a round through a GPU's memory.
TEST_P(Draw, TheApplicationsPictureIsTakenTwiceASecondWhileItIsShown) {
    const auto made = stage(SIZES[2]);
    countCalls(made->functions());
    const auto thumbnail = made->drawing().factory().createThumbnail();
    const auto rect = made->drawing().factory().createRect();
    thumbnail->mSize = rect->mSize = {0.2F, 0.2F};
    rect->mColor = glm::vec4(1.0F);
    monotonicTime = 1;
    const auto copiesOfTwoSeconds = [&](drawer::Drawer& drawer) {
        copies = 0;
        for (int frame = 0; frame < 20; ++frame) {
            EXPECT_TRUE(show(
                *made, [&](auto&) { drawer.draw(); }, frame % 3 != 0));
            monotonicTime += 100;
        }
        return copies;
    };
    EXPECT_EQ(copiesOfTwoSeconds(*thumbnail), 4);
    EXPECT_EQ(copiesOfTwoSeconds(*rect), 0);
    EXPECT_EQ(copiesOfTwoSeconds(*thumbnail), 4);
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
    const auto showPair = [&](GlStage& made, const Pair& pair) {
        return show(made, [&](auto& factory) {
            if (isClipped) {
                factory.setClip({0.0F, 0.0F}, {0.3F, 1.0F});
            }
            pair.text->draw();
            pair.mesh->draw();
            factory.clearClip();
        });
    };
    const auto kept = stage(SIZES[2]);
    Pair changed = make(kept->drawing().factory());
    ASSERT_TRUE(showPair(*kept, changed));
    for (std::size_t i = 0; i < changes.size(); ++i) {
        changes[i](changed);
        ASSERT_TRUE(showPair(*kept, changed));
        const software::Image picture = kept->read();
        const auto fresh = stage(SIZES[2]);
        Pair anew = make(fresh->drawing().factory());
        for (std::size_t k = 0; k <= i; ++k) {
            changes[k](anew);
        }
        ASSERT_TRUE(showPair(*fresh, anew));
        EXPECT_EQ(picture.mPixels, fresh->read().mPixels) << "after change " << i;
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
        for (std::size_t k = 0; k < list.batch.vertexCount(); ++k) {
            const drawlist::Vertex& vertex = list.batch.vertices()[k];
            ASSERT_TRUE(vertex.x >= 0.0F && vertex.x <= 320.0F && vertex.y >= 0.0F && vertex.y <= 200.0F)
                << i << ": " << vertex.x << ", " << vertex.y;
        }
    }
}

TEST_P(Draw, TakesNoNamesThatAProgramMayChoose) {
    const auto made = stage(SIZES[2]);
    const Drawers drawers = makeScene(made->drawing().factory());
    ASSERT_TRUE(show(*made, [&](auto& factory) { drawScene(factory, drawers, false); }));
    const opengl::Functions& gl = made->functions();
    for (GLuint name = 1; name < 1000 && !gl.version.isCore; ++name) {
        ASSERT_FALSE(gl.isTexture(name) || gl.isBuffer(name) || gl.isFramebuffer(name)) << name;
    }
}

TEST_P(Draw, AFullGlyphTextureIsEmptiedForTheNextDrawing) {
    const auto made = stage(SIZES[2]);
    const auto text = made->drawing().factory().createText();
    text->mPosition = {0.1F, 0.1F};
    text->setText("Mg8");
    text->setTextColor(glm::vec4(1.0F));
    const auto drawAt = [&](float height) {
        text->mSize = {0.8F, height};
        EXPECT_TRUE(show(*made, [&](auto&) { text->draw(); }));
        return made->drawing().list().glyphs.isFull() ? 1 : 0;
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
    const auto rect = made->drawing().factory().createRect();
    rect->mSize = {1.0F, 1.0F};
    rect->mColor = {0.2F, 0.52F, 0.8F, 1.0F};
    ASSERT_TRUE(show(*made, [&](auto&) { rect->draw(); }));
    const software::Pixel pixel = made->read().row(100)[100];
    EXPECT_NEAR(pixel.mRed, 51, 1);
    EXPECT_NEAR(pixel.mGreen, 133, 1);
    EXPECT_NEAR(pixel.mBlue, 204, 1);
}

INSTANTIATE_TEST_SUITE_P(Apis, Draw, testing::ValuesIn(GlStage::APIS),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (clock == CLOCK_MONOTONIC && monotonicTime != 0) {
        *time = {monotonicTime / 1000, monotonicTime % 1000 * 1000000};
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
}
