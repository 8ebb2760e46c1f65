#pragma once

#include "Glyph.h"
#include "OutlineFit.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <string>
#include <vector>

namespace fontgen {

/// Draws the font's characters from a scalable face. Throws std::runtime_error, with the face's file in the
/// message, when it cannot read the face, the face lacks a character, or a character cannot fit its given
/// box.
class GlyphRenderer {
public:
    explicit GlyphRenderer(const std::string& faceFile);
    ~GlyphRenderer();

    GlyphRenderer(const GlyphRenderer&) = delete;
    GlyphRenderer& operator=(const GlyphRenderer&) = delete;

    /// Renders all characters in the order of their codes. Each box is the smallest around the glyph's ink.
    std::vector<Glyph> render();

private:
    /// An outline's exact extent and its advance, in pixels.
    struct Metrics {
        Span horizontal;
        Span vertical;
        double advance = 0.0;
    };

    Glyph renderCharacter(char code);
    Glyph renderOutline(char code);
    Metrics load(char code);
    [[noreturn]] void fail(const std::string& what) const;

    std::string mFaceFile;
    FT_Library mLibrary = nullptr;
    FT_Face mFace = nullptr;
    /// Pixels per font unit: capitals have their height, digits their advance.
    double mScaleX = 1.0;
    double mScaleY = 1.0;
    double mOvershoot = 0.0;
    double mStroke = 0.0;
};

}  // namespace fontgen
