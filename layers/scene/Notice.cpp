#include "scene/Notice.h"

#include "core/SysPropWatcher.h"
#include "drawers/RectDrawer.h"
#include "drawers/TextDrawer.h"
#include "scene/Canvas.h"
#include "scene/NoticeText.h"
#include "scene/PrimitiveFactory.h"
#include "scene/Style.h"

#include <utility>

namespace scene {

namespace {

constexpr std::uint64_t SHOWN_NS = 1000000000;
constexpr std::uint64_t FRESH_NS = 2000000000;

// In fractions of the canvas.
constexpr float MIDDLE = 0.36F;
constexpr float WIDTH = 0.94F;

// Canvas units.
constexpr float HEIGHT = 20.0F;
constexpr float GAP = 8.0F;

const SysProp<std::string>& property() {
    // Never destroyed: a thread may still draw a frame while the process exits.
    static const auto& instance = SysPropWatcher::createSysProp<std::string>(NOTICE_PROPERTY, {});
    return instance;
}

}  // namespace

Notice::Notice(PrimitiveFactory& factory) : mBackdrop(factory.createRect()), mText(factory.createText()) {
    mText->setTextGravity(gui::TextGravity::CENTER);
}

Notice::~Notice() = default;

void Notice::read() {
    std::string value = property().getValue();
    const bool isFirst = !std::exchange(mHasLooked, true);
    if (value == mSeen) {
        return;
    }
    mSeen = std::move(value);
    const std::optional<NoticeText> notice = decodeNotice(mSeen);
    const std::uint64_t now = noticeTime();
    if (!notice || (isFirst && now - notice->writtenAt > FRESH_NS)) {
        return;
    }
    mText->setText(notice->text);
    mEnd = now + SHOWN_NS;
    mIsShown = true;
}

void Notice::layout(const Canvas& canvas) {
    const glm::vec2 unit = 1.0F / canvas.units;
    mText->mSize = glm::vec2(WIDTH, HEIGHT * unit.y);
    setTextHeight(*mText, FIGURE_TEXT_HEIGHT, canvas);
    mText->setTextColor(plainTextColor());
    const float width = measureText(*mText, canvas).x + 2.0F * GAP * unit.x;
    mBackdrop->mSize = glm::vec2(width, mText->mSize.y);
    mBackdrop->mColor = backdropColor();
    for (drawer::Drawer* const drawer :
         {static_cast<drawer::Drawer*>(mBackdrop.get()), static_cast<drawer::Drawer*>(mText.get())}) {
        drawer->mPosition = glm::vec2(0.5F, MIDDLE) - 0.5F * drawer->mSize;
    }
}

bool Notice::expire() {
    if (mIsShown && noticeTime() >= mEnd) {
        mIsShown = false;
        return true;
    }
    return false;
}

void Notice::draw() {
    mBackdrop->draw();
    mText->draw();
}

}  // namespace scene
