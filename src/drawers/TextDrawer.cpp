#include "drawers/TextDrawer.h"

#include "utils/Log.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace drawer {

namespace {

/// The atlas's glyphs by byte, which is faster than its map. For bytes without a glyph it asks the atlas,
/// which logs them.
class GlyphTable {
public:
    /// The process's table. The atlas never changes and outlives every drawer.
    static const GlyphTable& get() {
        static const GlyphTable table(gui::GlyphAtlas::getGlyphAtlas());
        return table;
    }

    float width(char symbol) const {
        const gui::Glyph* const glyph = entry(symbol);
        return glyph != nullptr ? glyph->mAdvance : mAtlas.getGlyphWidth(symbol);
    }

    float width(const std::string& text) const {
        float sum = 0.0F;
        for (const char symbol : text) {
            sum += width(symbol);
        }
        return sum;
    }

    const gui::Glyph* find(char symbol) const {
        const gui::Glyph* const glyph = entry(symbol);
        return glyph != nullptr ? glyph : mAtlas[symbol];
    }

private:
    explicit GlyphTable(const gui::GlyphAtlas& atlas) : mAtlas(atlas) {
        for (const auto& [symbol, glyph] : atlas.mGlyphs) {
            mGlyphs[static_cast<unsigned char>(symbol)] = glyph;
        }
    }

    const gui::Glyph* entry(char symbol) const { return mGlyphs[static_cast<unsigned char>(symbol)]; }

    const gui::GlyphAtlas& mAtlas;
    std::array<const gui::Glyph*, 256> mGlyphs{};
};

std::uint32_t toUint32(float value) {
    constexpr float LIMIT = 4294967296.0F;  // 2^32
    if (value >= LIMIT) {
        return std::numeric_limits<std::uint32_t>::max();
    }
    return value > 0.0F ? static_cast<std::uint32_t>(value) : 0;
}

/// A box without area makes scales and pen positions infinite or NaN; 0 draws nothing either.
float finiteOrZero(float value) {
    return std::isfinite(value) ? value : 0.0F;
}

/// Where the pen starts, in line units, for a line `width` wide in a box 2 / scaleX wide.
float penStart(gui::TextGravity gravity, float scaleX, float width) {
    switch (gravity) {
        case gui::TextGravity::RIGHT:
            return 2.0F / scaleX - width;
        case gui::TextGravity::CENTER:
            return 1.0F / scaleX - width / 2.0F;
        case gui::TextGravity::LEFT:
            break;
    }
    return 0.0F;
}

/// The matrix of a line with the pen at `pen`: `box` after a scale about the box's top-left corner and a
/// shift down by 1 - scaleY, which centres a lower line. Written out, because only x and y change.
glm::mat4 lineMatrix(const glm::mat4& box, float scaleX, float scaleY, float pen) {
    const glm::vec4 column0 = box[0] * scaleX;
    const glm::vec4 column3 = box[3] + box[0] * (scaleX - 1.0F) + column0 * pen;
    return {column0, box[1] * scaleY, box[2], column3};
}

/// `line` x translation by the pen x the glyph's placement, which only scales and moves in x and y.
glm::mat4 glyphMatrix(const glm::mat4& line, float pen, const glm::mat4& placement) {
    const glm::vec4 column3 = line[3] + line[0] * (pen + placement[3].x) + line[1] * placement[3].y;
    return {line[0] * placement[0].x, line[1] * placement[1].y, line[2], column3};
}

/// Whether every glyph of a line gets a finite matrix: the limit leaves room to multiply with advances and
/// offsets.
bool isDrawable(const glm::mat4& line) {
    constexpr float LIMIT = 1e30F;
    bool isBounded = true;
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 4; ++row) {
            isBounded = isBounded && std::abs(line[column][row]) <= LIMIT;  // false for NaN
        }
    }
    return isBounded;
}

}  // namespace

TextDrawer::TextDrawer() = default;

TextDrawer::~TextDrawer() = default;

void TextDrawer::draw() {
    mTextSize = mSize;
    mTextPosition = mPosition;
    const float height = getScreenHeight() * mTextSize.y;
    if (mTextSizeHint != 0 && mTextSizeHint < toUint32(height)) {
        const float ratio = static_cast<float>(mTextSizeHint) / height;
        mTextPosition.y += (1.0F - ratio) * mTextSize.y * 0.5F;
        mTextSize.y = ratio * mTextSize.y;
    }
    const glm::mat4 box = getTransform(mTextSize, mTextPosition, mTranslation);
    const float aspect = mTextSize.y / mTextSize.x * getAspectRatio();

    const GlyphTable& glyphs = GlyphTable::get();
    const std::string* line = &mText;
    std::string truncated;
    float width = glyphs.width(mText);
    float scaleX = aspect;
    float scaleY = 1.0F;
    const float widest = 2.0F / width;  // the scale at which the text fills the box's width
    if (widest < aspect) {
        if (mTextEllipsize != gui::TextEllipsize::NONE) {
            truncated = getTruncatedString(2.0F / aspect);
            line = &truncated;
            width = glyphs.width(truncated);
        } else {
            scaleX = widest;
            scaleY = widest / aspect;
        }
    }

    scaleX = finiteOrZero(scaleX);
    const float start = finiteOrZero(penStart(mTextGravity, scaleX, width));
    const glm::mat4 matrix = lineMatrix(box, scaleX, scaleY, start);
    if (!isDrawable(matrix)) {
        return;
    }
    float pen = 0.0F;
    for (const char symbol : *line) {
        const gui::Glyph* const glyph = glyphs.find(symbol);
        if (glyph == nullptr) {
            KORDANIX_LOG_ERROR("No Glyph(0x%x) in font", KORDANIX_LOG_HERE,
                               static_cast<unsigned int>(static_cast<unsigned char>(symbol)));
            continue;
        }
        drawGlyph(*glyph, glyphMatrix(matrix, pen, glyph->mTransform), mTextColor, symbol);
        pen += glyph->mAdvance;
    }
}

void TextDrawer::setText(const std::string& text) {
    mText = text;
}

void TextDrawer::setTextColor(const glm::vec4& color) {
    mTextColor = color;
}

void TextDrawer::setTextSizeHint(unsigned int hint) {
    mTextSizeHint = hint;
}

void TextDrawer::setTextEllipsize(gui::TextEllipsize ellipsize) {
    mTextEllipsize = ellipsize;
}

void TextDrawer::setTextGravity(gui::TextGravity gravity) {
    mTextGravity = gravity;
}

std::string TextDrawer::getTruncatedString(float maxWidth) {
    static const char DOTS[] = "...";

    const GlyphTable& glyphs = GlyphTable::get();
    const std::size_t length = mText.size();
    float width = 3.0F * glyphs.width('.');
    const bool isDotsFit = width <= maxWidth;
    std::size_t kept = 0;
    const auto fits = [&width, maxWidth](float more) {
        width += more;
        return width < maxWidth;
    };

    switch (mTextEllipsize) {
        case gui::TextEllipsize::END:
            while (isDotsFit && kept < length && fits(glyphs.width(mText[kept]))) {
                ++kept;
            }
            return mText.substr(0, kept) + DOTS;
        case gui::TextEllipsize::START:
            // START always drops the first character.
            while (isDotsFit && kept + 1 < length && fits(glyphs.width(mText[length - 1 - kept]))) {
                ++kept;
            }
            return DOTS + mText.substr(length - kept);
        case gui::TextEllipsize::MIDDLE:
            while (isDotsFit && kept < length / 2 &&
                   fits(glyphs.width(mText[kept]) + glyphs.width(mText[length - 1 - kept]))) {
                ++kept;
            }
            return mText.substr(0, kept) + DOTS + mText.substr(length - kept);
        case gui::TextEllipsize::NONE:
            break;
    }
    return mText;
}

}  // namespace drawer
