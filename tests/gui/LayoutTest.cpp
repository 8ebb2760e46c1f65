#include "drawers/Drawer.h"
#include "gui/LayoutDef.h"
#include "gui/LayoutManager.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstdint>

namespace {

using gui::LayoutManager;
using gui::RenderAreaType;
using gui::Widget;
using gui::WidgetType;

constexpr int WIDGETS = 5;

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

bool areApart(float start, float size, float otherStart, float otherSize) {
    return start + size <= otherStart + 1e-4F || otherStart + otherSize <= start + 1e-4F;
}

class Layout : public testing::TestWithParam<bool> {};

// Every combination of positions, the ninth standing for a widget that is not placed: on the canvas from left
// to right, clear of each other in the same part of the screen, and all of it where it was when somebody
// looked at the sheets of scripts/gallery.sh.
TEST_P(Layout, OfEveryCombination) {
    const bool isPortrait = GetParam();
    std::array<int, WIDGETS> positions{};
    std::uint32_t fingerprint = 2166136261U;
    for (int combination = 0; combination < 9 * 9 * 9 * 9 * 9; ++combination) {
        for (int i = 0, rest = combination; i < WIDGETS; ++i, rest /= 9) {
            positions[static_cast<std::size_t>(i)] = rest % 9;
        }
        setPositions(positions);
        LayoutManager::getInstance()->updateWidgetsLayouts(isPortrait);
        for (int i = 0; i < WIDGETS; ++i) {
            const glm::vec4& rect = widget(i).mRect;
            for (const float number : canvasRect(i, isPortrait)) {  // in whole half-units
                fingerprint =
                    (fingerprint ^ static_cast<std::uint32_t>(std::lround(number * 2.0F))) * 16777619U;
            }
            fingerprint = (fingerprint ^ static_cast<std::uint32_t>(widget(i).mPosition)) * 16777619U;
            if (widget(i).mPosition > 7) {
                continue;
            }
            ASSERT_TRUE(rect.x >= 0.0F && rect.x + rect.z <= 1.0F) << testing::PrintToString(positions) << i;
            for (int k = 0; k < i; ++k) {
                const auto part = [](int position) { return position <= 2 ? 0 : position <= 4 ? 1 : 2; };
                const glm::vec4& other = widget(k).mRect;
                ASSERT_TRUE(
                    widget(k).mPosition > 7 || part(widget(k).mPosition) != part(widget(i).mPosition) ||
                    areApart(rect.x, rect.z, other.x, other.z) || areApart(rect.y, rect.w, other.y, other.w))
                    << testing::PrintToString(positions) << k << i;
            }
        }
    }
    EXPECT_EQ(fingerprint, isPortrait ? 1727547829U : 3454786065U);
}

INSTANTIATE_TEST_SUITE_P(Orientations, Layout, testing::Bool(),
                         [](const auto& test) { return test.param ? "Portrait" : "Landscape"; });

TEST(LayoutPlaces, AFallbackPositionStays) {
    // The GPU-activity widget fills the middle row, so the memory widget moves up, and stays there.
    setPositions({9, 9, 3, 9, 4});
    LayoutManager::getInstance()->updateWidgetsLayouts(false);
    EXPECT_EQ(widget(4).mPosition, 0);
    widget(2).mEnabled = false;
    LayoutManager::getInstance()->updateWidgetsLayouts(false);
    EXPECT_FLOAT_EQ(widget(4).mRect.y * 360.0F, 14.0F);
}

TEST(LayoutDrawers, AreMovedByTheirWidget) {
    setPositions({0, 2, 6, 5, 1});
    LayoutManager* const manager = LayoutManager::getInstance();
    struct : drawer::Drawer {
        void draw() override {}
    } drawer;
    drawer.mRenderArea = static_cast<RenderAreaType>(17);
    for (const bool isPortrait : {true, false}) {
        manager->updateWidgetsLayouts(isPortrait);
        manager->updateDrawerLayout(&drawer);
        const glm::vec2 canvas = isPortrait ? glm::vec2(360.0F, 740.0F) : glm::vec2(740.0F, 360.0F);
        EXPECT_EQ(drawer.mPosition, glm::vec2(isPortrait ? 266.0F : 238.0F, 0.0F) / canvas);
        EXPECT_EQ(drawer.mSize, glm::vec2(isPortrait ? 45.0F : 42.0F, 17.0F) / canvas);
    }
    drawer.mWidget = &widget(1);
    manager->updateDrawerLayout(&drawer);
    EXPECT_FLOAT_EQ(drawer.mPosition.x, (533.0F + 238.0F) / 740.0F);
    EXPECT_FLOAT_EQ(drawer.mPosition.y, 14.0F / 360.0F);
}

}  // namespace
