#include "drawers/Drawer.h"
#include "gui/LayoutDef.h"
#include "gui/LayoutManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

using gui::LayoutManager;
using gui::RenderArea;
using gui::RenderAreaType;
using gui::Widget;
using gui::WidgetType;

constexpr int WIDGETS = 5;

/// The packing rules once more, in whole half-units of the canvas, so that every comparison is exact.
class Oracle {
public:
    struct Box {
        int x = 0, y = 0, width = 0, height = 0, position = 0;
    };

    explicit Oracle(bool isPortrait)
        : mCanvas(isPortrait ? std::array{720, 1480} : std::array{1480, 720}),
          mMargin(isPortrait ? std::array{10, 68} : std::array{72, 28}) {
        const int wide = isPortrait ? 700 : 1336;
        const int sizes[WIDGETS][2] = {{342, 110},
                                       {342, 110},
                                       {wide, 128},
                                       {isPortrait ? 108 : 222, isPortrait ? 222 : 110},
                                       {isPortrait ? 700 : 632, 110}};
        for (std::size_t i = 0; i < WIDGETS; ++i) {
            boxes[i].width = sizes[i][0];
            boxes[i].height = sizes[i][1];
        }
    }

    void place() {
        for (Box& box : boxes) {
            if (box.position < 0 || box.position > 7) {
                continue;
            }
            if (box.position == 3 || box.position == 4) {
                if (tryRow(mMiddle, box)) {
                    continue;
                }
                box.position = 0;
            }
            if (box.position <= 2) {
                if (tryRows(mTop, box)) {
                    continue;
                }
                box.position = 5;
            }
            tryRows(mBottom, box);
        }
        stack(mTop, mMargin[1], 1);
        stack(mBottom, mCanvas[1] - mMargin[1], -1);
        for (Box* box : mMiddle) {
            box->y = mCanvas[1] / 2 - box->height / 2;
        }
    }

    std::array<Box, WIDGETS> boxes;

private:
    using Row = std::vector<Box*>;

    bool isFree(const Row& row, const Box& box, int x) const {
        return x >= 0 && x + box.width <= mCanvas[0] &&
               std::none_of(row.begin(), row.end(), [&](const Box* other) {
                   return x < other->x + other->width && other->x < x + box.width;
               });
    }

    bool insert(Row& row, Box& box, int x, std::size_t index) const {
        if (!isFree(row, box, x)) {
            return false;
        }
        box.x = x;
        row.insert(row.begin() + static_cast<std::ptrdiff_t>(index), &box);
        return true;
    }

    bool tryRow(Row& row, Box& box) const {
        constexpr int SPACING = 10;
        switch (box.position) {
            case 1:
            case 6: {
                const int x = mCanvas[0] / 2 - box.width / 2;
                const auto smaller =
                    std::find_if(row.begin(), row.end(), [x](const Box* b) { return b->x < x; });
                return insert(row, box, x, static_cast<std::size_t>(smaller - row.begin()));
            }
            case 0:
            case 3:
            case 5:
                if (insert(row, box, mMargin[0], 0)) {
                    return true;
                }
                for (std::size_t i = 0; i < row.size(); ++i) {
                    if (insert(row, box, row[i]->x + row[i]->width + SPACING, i)) {
                        return true;
                    }
                }
                return false;
            default:
                if (insert(row, box, mCanvas[0] - box.width - mMargin[0], row.size())) {
                    return true;
                }
                for (std::size_t i = row.size(); i-- > 0;) {
                    if (insert(row, box, row[i]->x - box.width - SPACING, i + 1)) {
                        return true;
                    }
                }
                return false;
        }
    }

    bool tryRows(std::vector<Row>& rows, Box& box) const {
        for (Row& row : rows) {
            if (tryRow(row, box)) {
                return true;
            }
        }
        rows.emplace_back();
        return tryRow(rows.back(), box);
    }

    static void stack(const std::vector<Row>& rows, int line, int direction) {
        for (const Row& row : rows) {
            int highest = 0;
            for (Box* box : row) {
                box->y = direction > 0 ? line : line - box->height;
                highest = std::max(highest, box->height);
            }
            line += direction * (highest + 10);
        }
    }

    std::array<int, 2> mCanvas;
    std::array<int, 2> mMargin;
    std::vector<Row> mTop;
    std::vector<Row> mBottom;
    Row mMiddle;
};

Widget& widget(int type) {
    return *LayoutManager::getInstance()->getWidget(static_cast<WidgetType>(type));
}

/// The widget's rectangle in canvas units, rounded to tenths.
std::array<float, 4> canvasRect(int type, bool isPortrait) {
    const float width = isPortrait ? gui::SCREEN_HEIGHT : gui::SCREEN_WIDTH;
    const float height = isPortrait ? gui::SCREEN_WIDTH : gui::SCREEN_HEIGHT;
    const glm::vec4& rect = widget(type).mRect;
    return {rect.x * width, rect.y * height, rect.z * width, rect.w * height};
}

void setPositions(const std::array<int, WIDGETS>& positions) {
    for (int i = 0; i < WIDGETS; ++i) {
        widget(i).mPosition = positions[static_cast<std::size_t>(i)];
        widget(i).mEnabled = true;
    }
}

class Layout : public testing::TestWithParam<bool> {};

// Every combination of positions, the ninth standing for a widget that is not placed.
TEST_P(Layout, AgreesWithTheOracleForEveryCombination) {
    const bool isPortrait = GetParam();
    std::array<int, WIDGETS> positions{};
    for (int combination = 0; combination < 9 * 9 * 9 * 9 * 9; ++combination) {
        Oracle oracle(isPortrait);
        for (int i = 0, rest = combination; i < WIDGETS; ++i, rest /= 9) {
            positions[static_cast<std::size_t>(i)] = rest % 9;
            oracle.boxes[static_cast<std::size_t>(i)].position = rest % 9;
        }
        setPositions(positions);
        LayoutManager::getInstance()->updateWidgetsLayouts(isPortrait);
        oracle.place();
        for (int i = 0; i < WIDGETS; ++i) {
            const Oracle::Box& box = oracle.boxes[static_cast<std::size_t>(i)];
            const std::array<float, 4> rect = canvasRect(i, isPortrait);
            ASSERT_NEAR(rect[0], static_cast<float>(box.x) * 0.5F, 0.01F)
                << testing::PrintToString(positions) << i;
            ASSERT_NEAR(rect[1], static_cast<float>(box.y) * 0.5F, 0.01F)
                << testing::PrintToString(positions) << i;
            ASSERT_NEAR(rect[2], static_cast<float>(box.width) * 0.5F, 0.01F);
            ASSERT_NEAR(rect[3], static_cast<float>(box.height) * 0.5F, 0.01F);
            ASSERT_EQ(widget(i).mPosition, box.position) << testing::PrintToString(positions) << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Orientations, Layout, testing::Bool(),
                         [](const auto& test) { return test.param ? "Portrait" : "Landscape"; });

void expectRect(int type, bool isPortrait, std::array<float, 4> expected) {
    const std::array<float, 4> rect = canvasRect(type, isPortrait);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(rect[i], expected[i], 0.01F) << "widget " << type << " component " << i;
    }
}

TEST(LayoutPlaces, OfTheDefaultSettings) {
    setPositions({0, 2, 6, 5, 1});
    widget(4).mEnabled = false;
    LayoutManager::getInstance()->updateWidgetsLayouts(false);
    expectRect(0, false, {36, 14, 171, 55});
    expectRect(1, false, {533, 14, 171, 55});
    expectRect(2, false, {36, 282, 668, 64});
    expectRect(3, false, {36, 222, 111, 55});
    expectRect(4, false, {0, 0, 316, 55});
    LayoutManager::getInstance()->updateWidgetsLayouts(true);
    expectRect(0, true, {5, 34, 171, 55});
    expectRect(1, true, {184, 34, 171, 55});
    expectRect(2, true, {5, 642, 350, 64});
    expectRect(3, true, {5, 526, 54, 111});
}

TEST(LayoutPlaces, AFallbackPositionStays) {
    // The GPU-activity widget fills the middle row, so the memory widget moves up, and stays there.
    setPositions({9, 9, 3, 9, 4});
    LayoutManager::getInstance()->updateWidgetsLayouts(false);
    EXPECT_EQ(widget(4).mPosition, 0);
    widget(2).mEnabled = false;
    LayoutManager::getInstance()->updateWidgetsLayouts(false);
    expectRect(4, false, {36, 14, 316, 55});
}

TEST(LayoutAreas, AreFractionsOfTheCanvasOfTheCurrentOrientation) {
    struct Case {
        int area;
        std::array<float, 4> landscape;
        std::array<float, 4> portrait;
    };
    const Case cases[] = {
        {0, {6, 44, 162, 10}, {6, 44, 162, 10}},  {8, {148, 0, 22, 17}, {148, 0, 22, 17}},
        {12, {6, 34, 41, 17}, {6, 34, 41, 17}},   {17, {238, 0, 42, 17}, {266, 0, 45, 17}},
        {22, {280, 0, 34, 17}, {311, 0, 40, 17}}, {29, {88, 26, 77, 15}, {88, 26, 77, 15}},
        {32, {0, 0, 111, 55}, {0, 0, 54, 111}},   {33, {0, 0, 40, 24}, {4, 0, 40, 24}},
        {37, {0, 42, 668, 20}, {0, 42, 350, 20}}, {38, {0, 42, 668, 20}, {0, 42, 350, 20}},
        {39, {0, 0, 668, 64}, {0, 0, 350, 64}},   {45, {0, 0, 36, 14}, {0, 0, 5, 34}},
        {46, {0, 0, 5, 5}, {0, 0, 5, 5}},
    };
    const LayoutManager* const manager = LayoutManager::getInstance();
    for (const bool isPortrait : {false, true}) {
        LayoutManager::getInstance()->updateWidgetsLayouts(isPortrait);
        for (const Case& c : cases) {
            const RenderArea area = manager->getRenderArea(static_cast<RenderAreaType>(c.area));
            const std::array<float, 4>& expected = isPortrait ? c.portrait : c.landscape;
            const float width = isPortrait ? 360.0F : 740.0F;
            const float height = isPortrait ? 740.0F : 360.0F;
            EXPECT_FLOAT_EQ(area.x, expected[0] / width) << c.area;
            EXPECT_FLOAT_EQ(area.y, expected[1] / height) << c.area;
            EXPECT_FLOAT_EQ(area.width, expected[2] / width) << c.area;
            EXPECT_FLOAT_EQ(area.height, expected[3] / height) << c.area;
        }
    }
    EXPECT_EQ(manager->mLandscapeAreas.size(), 47U);
    EXPECT_EQ(manager->mPortraitAreas.size(), 47U);
}

class PlainDrawer : public drawer::Drawer {
public:
    void draw() override {}
};

TEST(LayoutDrawers, AreMovedByTheirWidget) {
    setPositions({0, 2, 6, 5, 1});
    LayoutManager* const manager = LayoutManager::getInstance();
    manager->updateWidgetsLayouts(false);
    PlainDrawer drawer;
    EXPECT_EQ(static_cast<int>(drawer.mValueType), 11);
    EXPECT_TRUE(drawer.mEnabled);
    drawer.mRenderArea = static_cast<RenderAreaType>(29);
    manager->updateDrawerLayout(&drawer);
    EXPECT_FLOAT_EQ(drawer.mPosition.x, 88.0F / 740.0F);
    EXPECT_FLOAT_EQ(drawer.mPosition.y, 26.0F / 360.0F);
    drawer.mWidget = &widget(1);
    manager->updateDrawerLayout(&drawer);
    EXPECT_FLOAT_EQ(drawer.mPosition.x, (533.0F + 88.0F) / 740.0F);
    EXPECT_FLOAT_EQ(drawer.mPosition.y, (14.0F + 26.0F) / 360.0F);
    EXPECT_FLOAT_EQ(drawer.mSize.x, 77.0F / 740.0F);
    EXPECT_FLOAT_EQ(drawer.mSize.y, 15.0F / 360.0F);
}

}  // namespace
