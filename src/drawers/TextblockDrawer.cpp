#include "drawers/TextblockDrawer.h"

#include <utility>

namespace drawer {

TextblockDrawer::TextblockDrawer(std::unique_ptr<TextDrawer> (*createTextDrawer)(),
                                 std::unique_ptr<RectDrawer> background, unsigned int lineCount,
                                 unsigned int textSizeHint)
    : mBackground(std::move(background)), mMaxLines(lineCount), mTextSizeHint(textSizeHint) {
    mLineDrawers.reserve(lineCount);
    for (unsigned int i = 0; i < lineCount; ++i) {
        mLineDrawers.push_back(createTextDrawer());
    }
}

TextblockDrawer::~TextblockDrawer() = default;

void TextblockDrawer::draw() {
    drawBackground();
    drawText();
}

void TextblockDrawer::addText(const std::string& text) {
    if (mLines.size() < mMaxLines) {
        mLines.push_back(text);
        return;
    }
    if (mLines.empty()) {
        return;
    }
    if (mOldestLine >= mMaxLines) {
        mOldestLine = 0;
    }
    mLines[mOldestLine] = text;
    ++mOldestLine;
}

void TextblockDrawer::setTextColor(const glm::vec4& color) {
    mTextColor = color;
}

void TextblockDrawer::setTextEllipsize(gui::TextEllipsize ellipsize) {
    mTextEllipsize = ellipsize;
}

void TextblockDrawer::setTextGravity(gui::TextGravity gravity) {
    mTextGravity = gravity;
}

void TextblockDrawer::setBackgroundColor(const glm::vec4& color) {
    mBackground->mColor = color;
}

void TextblockDrawer::drawBackground() {
    mBackground->mTranslation = mTranslation;
    mBackground->mSize = mSize;
    mBackground->mPosition = mPosition;
    mBackground->draw();
}

void TextblockDrawer::drawText() {
    const float lineHeight = mSize.y / static_cast<float>(mMaxLines);
    float y = mPosition.y;
    std::uint32_t index = mOldestLine;
    for (const std::unique_ptr<TextDrawer>& line : mLineDrawers) {
        if (index >= mMaxLines) {
            index = 0;
        }
        if (index >= mLines.size()) {
            continue;
        }
        if (line != nullptr) {
            line->mTranslation = mTranslation;
            line->mSize = glm::vec2(mSize.x, lineHeight);
            line->mPosition = glm::vec2(mPosition.x, y);
            line->setTextSizeHint(mTextSizeHint);
            line->setText(mLines[index]);
            line->setTextColor(mTextColor);
            line->setTextEllipsize(mTextEllipsize);
            line->setTextGravity(mTextGravity);
            line->draw();
        }
        y += lineHeight;
        ++index;
    }
}

}  // namespace drawer
