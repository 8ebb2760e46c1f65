// The text drawer with any bytes in any box on any surface, and texts shortened to any width.

#include "ByteReader.h"
#include "Check.h"
#include "CheckedPrimitives.h"
#include "gui/GlyphAtlas.h"

#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr float DOTS = 3.0F;

float advanceOf(char symbol) {
    return gui::GlyphAtlas::getGlyphAtlas().getGlyphWidth(symbol);
}

/// How many of the widths fit after the dots, one after the other.
std::size_t fitting(const std::vector<float>& widths, float maxWidth) {
    float sum = DOTS * advanceOf('.');
    if (!(sum <= maxWidth)) {
        return 0;
    }
    std::size_t count = 0;
    for (const float width : widths) {
        sum += width;
        if (!(sum < maxWidth)) {
            break;
        }
        ++count;
    }
    return count;
}

std::string expectedShortening(const std::string& text, gui::TextEllipsize ellipsize, float maxWidth) {
    const std::size_t length = text.size();
    std::vector<float> widths;
    switch (ellipsize) {
        case gui::TextEllipsize::END:
            for (const char symbol : text) {
                widths.push_back(advanceOf(symbol));
            }
            return text.substr(0, fitting(widths, maxWidth)) + "...";
        case gui::TextEllipsize::START:
            for (std::size_t i = length; i-- > 1;) {
                widths.push_back(advanceOf(text[i]));
            }
            return "..." + text.substr(length - fitting(widths, maxWidth));
        case gui::TextEllipsize::MIDDLE: {
            for (std::size_t i = 0; i < length / 2; ++i) {
                widths.push_back(advanceOf(text[i]) + advanceOf(text[length - 1 - i]));
            }
            const std::size_t count = fitting(widths, maxWidth);
            return text.substr(0, count) + "..." + text.substr(length - count);
        }
        default:
            return text;
    }
}

/// Records the pen's position, in canvas fractions, at every glyph.
class MeasuringText : public fuzz::CheckedText {
public:
    void drawGlyph(const gui::Glyph& glyph, const glm::mat4& transform, const glm::vec4& color,
                   char symbol) override {
        CheckedText::drawGlyph(glyph, transform, color, symbol);
        mLine += symbol;
        FUZZ_CHECK(&glyph == gui::GlyphAtlas::getGlyphAtlas()[symbol]);
        if (glyph.mTransform[0].x > 0.0F) {
            // Where the line's pen (x = -1 before the glyph's placement) is in the quad's coordinates.
            const auto canvasX = [&](float x) {
                const float local = (x - glyph.mTransform[3].x) / glyph.mTransform[0].x;
                return transform[0].x * local + transform[3].x;
            };
            mLeft = std::min(mLeft, canvasX(-1.0F));
            mRight = std::max(mRight, canvasX(-1.0F + glyph.mAdvance));
        }
    }

    std::string mLine;
    float mLeft = 1e30F;
    float mRight = -1e30F;
};

bool isIn(float value, float least, float most) {
    return value >= least && value <= most;
}

/// A line that is not shortened must stay in its box.
void checkExtent(const MeasuringText& text) {
    const fuzz::Surface& surface = fuzz::surface();
    const bool isSane = isIn(text.mSize.x, 0.01F, 1.0F) && isIn(text.mSize.y, 0.01F, 1.0F) &&
                        isIn(text.mPosition.x, -1.0F, 1.0F) && isIn(surface.aspectRatio, 0.1F, 10.0F) &&
                        isIn(surface.height, 1.0F, 10000.0F);
    if (isSane && text.mTextEllipsize == gui::TextEllipsize::NONE && text.mRight > text.mLeft) {
        constexpr float ROUNDING = 1e-3F;
        FUZZ_CHECK(text.mLeft >= text.mPosition.x - ROUNDING);
        FUZZ_CHECK(text.mRight <= text.mPosition.x + text.mSize.x + ROUNDING);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::ByteReader reader(data, size);
    fuzz::surface() = {};
    fuzz::surface().aspectRatio = reader.singleNumber();
    fuzz::surface().height = reader.singleNumber();
    MeasuringText text;
    text.mSize = {reader.singleNumber(), reader.singleNumber()};
    text.mPosition = {reader.singleNumber(), reader.singleNumber()};
    if (reader.flag()) {
        text.mTranslation = {reader.singleNumber(), reader.singleNumber(), reader.singleNumber()};
    }
    text.setTextSizeHint(reader.flag() ? reader.byte() : reader.word());
    text.setTextGravity(static_cast<gui::TextGravity>(reader.flag() ? reader.word() : reader.upTo(3)));
    text.setTextEllipsize(static_cast<gui::TextEllipsize>(reader.flag() ? reader.word() : reader.upTo(4)));
    const float maxWidth = reader.singleNumber();
    text.setText(reader.rest());

    const std::string shortened = text.getTruncatedString(maxWidth);
    FUZZ_CHECK(shortened == expectedShortening(text.mText, text.mTextEllipsize, maxWidth));
    text.draw();
    FUZZ_CHECK(text.mLine.size() <= text.mText.size() + 3);
    if (text.mTranslation == glm::vec3(0.0F)) {
        checkExtent(text);
    }
    return 0;
}
