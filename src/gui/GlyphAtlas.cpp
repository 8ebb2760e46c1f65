#include "gui/GlyphAtlas.h"

#include "gui/EmbeddedFont.h"
#include "utils/Log.h"

#include <glm/gtc/matrix_transform.hpp>

namespace gui {
namespace {

constexpr std::uint32_t HEADER_SIZE = 20;
constexpr std::uint32_t GLYPH_RECORD_SIZE = 32;

/// Reads number `index` of a row of 32-bit little-endian numbers.
std::uint32_t field(const unsigned char* record, std::uint32_t index) {
    const unsigned char* bytes = record + std::size_t{4} * index;
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

float floatField(const unsigned char* record, std::uint32_t index) {
    return static_cast<float>(field(record, index));
}

Glyph makeGlyph(const unsigned char* record, float bitmapWidth, float bitmapHeight, float lineHeight) {
    const float x = floatField(record, 1);
    const float y = floatField(record, 2);
    const float width = floatField(record, 3);
    const float height = floatField(record, 4);
    const float xOffset = floatField(record, 5);
    const float yOffset = floatField(record, 6);
    const float xAdvance = floatField(record, 7);

    // First moves the quad to (0, 0)..(2, 2), so that scaling keeps its top-left corner in place.
    glm::mat4 transform = glm::translate(
        glm::mat4(1.0F),
        glm::vec3(2.0F * xOffset / lineHeight - 1.0F, 2.0F * yOffset / lineHeight - 1.0F, 0.0F));
    transform = glm::scale(transform, glm::vec3(width / lineHeight, height / lineHeight, 1.0F));
    transform = glm::translate(transform, glm::vec3(1.0F, 1.0F, 0.0F));

    const float left = x / bitmapWidth;
    const float right = (x + width) / bitmapWidth;
    const float top = y / bitmapHeight;
    const float bottom = (y + height) / bitmapHeight;
    return {transform,
            2.0F * xAdvance / lineHeight,
            {{{-1.0F, -1.0F}, {left, top}},
             {{1.0F, -1.0F}, {right, top}},
             {{-1.0F, 1.0F}, {left, bottom}},
             {{1.0F, 1.0F}, {right, bottom}}}};
}

}  // namespace

GlyphAtlas& GlyphAtlas::getGlyphAtlas() {
    // Never destroyed: a thread may draw text while another one ends the process.
    static auto* const atlas = new GlyphAtlas(embeddedFont());
    return *atlas;
}

GlyphAtlas::GlyphAtlas(const unsigned char* record)
    : mBitmap(nullptr), mBitmapWidth(field(record, 1)), mBitmapHeight(field(record, 2)) {
    const std::uint32_t glyphCount = field(record, 0);
    const float lineHeight = floatField(record, 3);

    const unsigned char* glyphRecord = record + HEADER_SIZE;
    for (std::uint32_t i = 0; i < glyphCount; ++i, glyphRecord += GLYPH_RECORD_SIZE) {
        const auto symbol = static_cast<char>(field(glyphRecord, 0) & 0xFFU);
        Glyph*& glyph = mGlyphs[symbol];
        delete glyph;  // a later record replaces an earlier one
        glyph = new Glyph(makeGlyph(glyphRecord, static_cast<float>(mBitmapWidth),
                                    static_cast<float>(mBitmapHeight), lineHeight));
    }
    mBitmap = glyphRecord;
}

GlyphAtlas::~GlyphAtlas() {
    for (const auto& entry : mGlyphs) {
        delete entry.second;
    }
}

float GlyphAtlas::getGlyphWidth(char symbol) const {
    const auto found = mGlyphs.find(symbol);
    if (found == mGlyphs.end()) {
        KORDANIX_LOG_ERROR("No symbol '%c' in Glyph atlas!", KORDANIX_LOG_HERE, symbol);
        return 0.0F;
    }
    return found->second->mAdvance;
}

const Glyph* GlyphAtlas::operator[](char symbol) const {
    const auto found = mGlyphs.find(symbol);
    if (found == mGlyphs.end()) {
        KORDANIX_LOG_ERROR("No symbol '%c' in Glyph atlas!", KORDANIX_LOG_HERE, symbol);
        return nullptr;
    }
    return found->second;
}

}  // namespace gui
