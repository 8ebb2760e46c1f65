#pragma once

#include "Glyph.h"
#include "OutlineFit.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <string>
#include <vector>

namespace fontgen {

/// Draws the font's characters from a scalable face. Throws std::runtime_error, with the face's file in the
/// message, when the face cannot be read, lacks a character or cannot be brought into a given box.
class GlyphRenderer {
public:
    explicit GlyphRenderer(const std::string& faceFile);
    ~GlyphRenderer();

    GlyphRenderer(const GlyphRenderer&) = delete;
    GlyphRenderer& operator=(const GlyphRenderer&) = delete;

    /// All characters in the order of their codes. Each box is the smallest that holds the glyph's ink.
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
