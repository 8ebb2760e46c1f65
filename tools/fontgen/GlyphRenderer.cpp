#include "GlyphRenderer.h"

#include FT_BBOX_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace fontgen {
namespace {

constexpr double SUBPIXELS = 64.0;

FT_Pos toSubpixels(double pixels) {
    return static_cast<FT_Pos>(std::lround(pixels * SUBPIXELS));
}

bool hasInk(const std::vector<std::uint8_t>& coverage, std::size_t first, std::size_t step,
            std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (coverage[first + i * step] != 0) {
            return true;
        }
    }
    return false;
}

// Removes empty rows and columns from a picture of the whole line, `width` columns wide.
void trim(Glyph& glyph, std::size_t width) {
    const std::size_t height = LINE_HEIGHT;
    std::size_t left = 0;
    std::size_t right = width;
    std::size_t top = 0;
    std::size_t bottom = height;
    while (left < right && !hasInk(glyph.coverage, left, width, height)) {
        ++left;
    }
    while (right > left && !hasInk(glyph.coverage, right - 1, width, height)) {
        --right;
    }
    while (top < bottom && !hasInk(glyph.coverage, top * width, 1, width)) {
        ++top;
    }
    while (bottom > top && !hasInk(glyph.coverage, (bottom - 1) * width, 1, width)) {
        --bottom;
    }
    std::vector<std::uint8_t> trimmed;
    for (std::size_t row = top; row < bottom; ++row) {
        const auto first = glyph.coverage.begin() + static_cast<std::ptrdiff_t>(row * width);
        trimmed.insert(trimmed.end(), first + static_cast<std::ptrdiff_t>(left),
                       first + static_cast<std::ptrdiff_t>(right));
    }
    glyph.coverage = std::move(trimmed);
    glyph.box.xOffset = static_cast<std::uint32_t>(left);
    glyph.box.yOffset = static_cast<std::uint32_t>(top);
    glyph.box.width = static_cast<std::uint32_t>(right - left);
    glyph.box.height = static_cast<std::uint32_t>(bottom - top);
}

Glyph solid(char code, const GlyphBox& box, std::uint8_t coverage) {
    Glyph glyph;
    glyph.code = code;
    glyph.box = box;
    glyph.coverage.assign(std::size_t{box.width} * box.height, coverage);
    return glyph;
}

}  // namespace

GlyphRenderer::GlyphRenderer(const std::string& faceFile) : mFaceFile(faceFile) {
    if (FT_Init_FreeType(&mLibrary) != 0) {
        throw std::runtime_error("FreeType cannot be started");
    }
    if (FT_New_Face(mLibrary, faceFile.c_str(), 0, &mFace) != 0) {
        FT_Done_FreeType(mLibrary);
        throw std::runtime_error(faceFile + ": cannot be read as a font face");
    }
    try {
        if (!FT_IS_SCALABLE(mFace)) {
            fail("has no outlines");
        }
        mScaleY = CAPITAL_HEIGHT / load('H').vertical.high;
        mScaleX = DIGIT_ADVANCE / load('0').advance;
        mOvershoot = -load('o').vertical.low;
        // The stem of "I" gives the width of all strokes: it has no serifs, and is exact enough for keeping
        // tails.
        mStroke = load('I').horizontal.size();
    } catch (...) {
        FT_Done_Face(mFace);
        FT_Done_FreeType(mLibrary);
        throw;
    }
}

GlyphRenderer::~GlyphRenderer() {
    FT_Done_Face(mFace);
    FT_Done_FreeType(mLibrary);
}

void GlyphRenderer::fail(const std::string& what) const {
    throw std::runtime_error(mFaceFile + ": " + what);
}

std::vector<Glyph> GlyphRenderer::render() {
    std::vector<Glyph> glyphs;
    for (const char code : CHARACTERS) {
        glyphs.push_back(renderCharacter(code));
    }
    return glyphs;
}

Glyph GlyphRenderer::renderCharacter(char code) {
    if (code == ' ') {
        return solid(code, *fixedBox(code), 0);
    }
    if (code == '@') {
        return solid(code,
                     {0, 0, SWATCH_SIZE, SWATCH_SIZE, SWATCH_OFFSET, BASELINE - SWATCH_SIZE, SWATCH_ADVANCE},
                     255);
    }
    Glyph glyph = renderOutline(code);
    if (const GlyphBox* const wanted = fixedBox(code)) {
        const GlyphBox& got = glyph.box;
        if (got.xOffset != wanted->xOffset || got.yOffset != wanted->yOffset || got.width != wanted->width ||
            got.height != wanted->height) {
            fail(std::string("'") + code + "' does not fit into its box");
        }
        glyph.box = *wanted;
    }
    return glyph;
}

Glyph GlyphRenderer::renderOutline(char code) {
    const Metrics metrics = load(code);
    const AxisMap mapX = fitHorizontally(code, metrics.horizontal);
    const AxisMap mapY = fitVertically(code, metrics.vertical, mOvershoot, mStroke);
    const double right = mapX(metrics.horizontal.high);

    FT_Outline& outline = mFace->glyph->outline;
    for (int i = 0; i < outline.n_points; ++i) {
        FT_Vector& point = outline.points[i];
        point.x = toSubpixels(mapX(static_cast<double>(point.x) * mScaleX));
        // The bitmap's lower edge is the lower edge of the line, below the baseline.
        point.y = toSubpixels(mapY(static_cast<double>(point.y) * mScaleY) + LINE_HEIGHT - BASELINE);
    }

    Glyph glyph;
    glyph.code = code;
    const auto width = static_cast<unsigned int>(std::ceil(right)) + 1U;
    glyph.coverage.assign(std::size_t{width} * LINE_HEIGHT, 0);
    FT_Bitmap bitmap = {};
    bitmap.width = width;
    bitmap.rows = LINE_HEIGHT;
    bitmap.pitch = static_cast<int>(width);
    bitmap.buffer = glyph.coverage.data();
    bitmap.pixel_mode = FT_PIXEL_MODE_GRAY;
    bitmap.num_grays = 256;
    if (FT_Outline_Get_Bitmap(mLibrary, &outline, &bitmap) != 0) {
        fail(std::string("'") + code + "' cannot be drawn");
    }
    trim(glyph, width);
    if (glyph.coverage.empty()) {
        fail(std::string("'") + code + "' has no ink");
    }
    const double rightBearing = metrics.advance - metrics.horizontal.high;
    glyph.box.xAdvance = code >= '0' && code <= '9'
                             ? DIGIT_ADVANCE
                             : static_cast<std::uint32_t>(std::lround(right + rightBearing));
    return glyph;
}

GlyphRenderer::Metrics GlyphRenderer::load(char code) {
    const FT_UInt index = FT_Get_Char_Index(mFace, static_cast<FT_ULong>(static_cast<unsigned char>(code)));
    FT_BBox box = {};
    if (index == 0 || FT_Load_Glyph(mFace, index, FT_LOAD_NO_SCALE) != 0 ||
        mFace->glyph->format != FT_GLYPH_FORMAT_OUTLINE ||
        FT_Outline_Get_BBox(&mFace->glyph->outline, &box) != 0 || box.xMax <= box.xMin ||
        box.yMax <= box.yMin) {
        fail(std::string("has no usable outline of '") + code + "'");
    }
    Metrics metrics;
    metrics.horizontal = {static_cast<double>(box.xMin) * mScaleX, static_cast<double>(box.xMax) * mScaleX};
    metrics.vertical = {static_cast<double>(box.yMin) * mScaleY, static_cast<double>(box.yMax) * mScaleY};
    metrics.advance = static_cast<double>(mFace->glyph->metrics.horiAdvance) * mScaleX;
    return metrics;
}

}  // namespace fontgen
