// Makes the font for the library from a scalable face.

#include "AtlasPacker.h"
#include "FontRecord.h"
#include "GlyphRenderer.h"
#include "Preview.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <fstream>
#include <iostream>

namespace {

constexpr int FAILED = 1;

void generate(const std::string& face, const std::string& output, const std::string& preview) {
    std::vector<fontgen::Glyph> glyphs = fontgen::GlyphRenderer(face).render();
    // One free texel between glyphs keeps the neighbour out of a filtered sample.
    if (!fontgen::packGlyphs(glyphs, 1)) {
        throw std::runtime_error(face + ": the glyphs do not fit into the bitmap");
    }
    const std::vector<std::uint8_t> bytes = fontgen::writeFontRecord(glyphs);
    std::ofstream file(output, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error(output + ": cannot be written");
    }
    if (!preview.empty()) {
        fontgen::writePreview(glyphs, preview);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    CLI::App app("Makes the overlay's embedded font (header, glyph records, bitmap) from a scalable face.");
    std::string face;
    std::string output;
    std::string preview;
    app.add_option("--face", face, "TrueType or OpenType file to draw the glyphs from")->required();
    app.add_option("--output", output, "Font record to write")->required();
    app.add_option("--preview", preview, "PNG to write with the bitmap and lines of sample text");
    CLI11_PARSE(app, argc, argv);
    generate(face, output, preview);
    return 0;
} catch (const std::exception& error) {
    std::cerr << "fontgen: " << error.what() << '\n';
    return FAILED;
}
