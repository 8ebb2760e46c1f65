#include "scene/DumpMark.h"

#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "gui/LayoutManager.h"
#include "scene/Canvas.h"
#include "scene/PrimitiveFactory.h"
#include "scene/Style.h"

#include <algorithm>

namespace scene {

namespace {

const glm::vec4 RED(1.0F, 0.0F, 0.0F, 1.0F);

// Canvas units.
constexpr float MARK_WIDTH = 38.0F;
constexpr float MARK_HEIGHT = 12.0F;
constexpr float LIGHT = 6.0F;
constexpr float MARK_GAP = 3.0F;

}  // namespace

DumpMark::DumpMark(PrimitiveFactory& factory)
    : mBackdrop(factory.createRect()), mLight(factory.createRect()), mText(factory.createText()) {
    mLight->mColor = RED;
    mText->setText("Dump");
    mText->setTextGravity(gui::TextGravity::LEFT);
}

DumpMark::~DumpMark() = default;

void DumpMark::layout(const Canvas& canvas) {
    const gui::RenderArea margin =
        gui::LayoutManager::getInstance()->getRenderArea(gui::RenderAreaType::MARGIN);
    const glm::vec2 unit = 1.0F / canvas.units;
    const auto place = [unit](drawer::Drawer& drawer, const glm::vec2& position, float width, float height) {
        drawer.mPosition = position;
        drawer.mSize = glm::vec2(width, height) * unit;
    };
    // At a large scale the margin is too low for it.
    const glm::vec2 corner(margin.width, std::max(margin.height - (MARK_HEIGHT + 1.0F) * unit.y, 0.0F));
    place(*mBackdrop, corner, MARK_WIDTH, MARK_HEIGHT);
    place(*mLight, corner + glm::vec2(MARK_GAP, 0.5F * (MARK_HEIGHT - LIGHT)) * unit, LIGHT, LIGHT);
    const float textLeft = MARK_GAP + LIGHT + MARK_GAP;
    place(*mText, corner + glm::vec2(textLeft, 0.0F) * unit, MARK_WIDTH - textLeft, MARK_HEIGHT);
    mBackdrop->mColor = backdropColor();
    mText->setTextColor(plainTextColor());
    setTextHeight(*mText, NOTE_TEXT_HEIGHT, canvas);
}

void DumpMark::draw() {
    mBackdrop->draw();
    mLight->draw();
    mText->draw();
}

}  // namespace scene
