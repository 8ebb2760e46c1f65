#include "Preview.h"

#include "FontRecord.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace fontgen {
namespace {

constexpr std::string_view SAMPLES[] = {"GPU 585MHz 59.9 (16.7ms) CPU 12% @Vertex @Fragment",
                                        "Jumping wizard boxes quickly #37: N/A, 0123456789.",
                                        "HIJKLOQRTXYZ abdefhijklmnopqrstuy fjord Egyptian"};
constexpr std::size_t SMALL_LINE = 17;

struct Picture {
    Picture(std::size_t columns, std::size_t rows)
        : width(columns), height(rows), pixels(columns * rows, 0) {}

    std::uint8_t& at(std::size_t x, std::size_t y) { return pixels[y * width + x]; }

    void paste(const Picture& other, std::size_t left, std::size_t top) {
        for (std::size_t y = 0; y < other.height && top + y < height; ++y) {
            for (std::size_t x = 0; x < other.width && left + x < width; ++x) {
                at(left + x, top + y) = other.pixels[y * other.width + x];
            }
        }
    }

    std::size_t width;
    std::size_t height;
    std::vector<std::uint8_t> pixels;
};

Picture setLine(const std::vector<Glyph>& glyphs, std::string_view text) {
    Picture line(text.size() * 45, LINE_HEIGHT);
    std::size_t pen = 0;
    for (const char code : text) {
        const auto glyph = std::find_if(glyphs.begin(), glyphs.end(),
                                        [code](const Glyph& candidate) { return candidate.code == code; });
        if (glyph == glyphs.end()) {
            continue;
        }
        for (std::size_t i = 0; i < glyph->coverage.size(); ++i) {
            std::uint8_t& pixel = line.at(pen + glyph->box.xOffset + i % glyph->box.width,
                                          glyph->box.yOffset + i / glyph->box.width);
            pixel = std::max(pixel, glyph->coverage[i]);
        }
        pen += glyph->box.xAdvance;
    }
    return line;
}

// The mean of the area that a small pixel covers; a source pixel on the rim counts in proportion.
Picture shrink(const Picture& from, std::size_t height) {
    Picture to(from.width * height / from.height, height);
    const double step = static_cast<double>(from.height) / static_cast<double>(height);
    const auto share = [step](std::size_t source, std::size_t target) {
        const double low = std::max(static_cast<double>(source), static_cast<double>(target) * step);
        const double high = std::min(static_cast<double>(source + 1), static_cast<double>(target + 1) * step);
        return std::max(0.0, high - low) / step;
    };
    for (std::size_t y = 0; y < to.height; ++y) {
        for (std::size_t x = 0; x < to.width; ++x) {
            const auto firstX = static_cast<std::size_t>(static_cast<double>(x) * step);
            const auto firstY = static_cast<std::size_t>(static_cast<double>(y) * step);
            const auto span = static_cast<std::size_t>(step) + 2;
            double sum = 0.0;
            for (std::size_t v = firstY; v < std::min(firstY + span, from.height); ++v) {
                for (std::size_t u = firstX; u < std::min(firstX + span, from.width); ++u) {
                    sum += from.pixels[v * from.width + u] * share(u, x) * share(v, y);
                }
            }
            to.at(x, y) = static_cast<std::uint8_t>(std::lround(sum));
        }
    }
    return to;
}

}  // namespace

void writePreview(const std::vector<Glyph>& glyphs, const std::string& file) {
    constexpr std::size_t margin = 8;
    Picture page(1400, BITMAP_HEIGHT + std::size(SAMPLES) * (LINE_HEIGHT + SMALL_LINE + margin) + 3 * margin);
    Picture bitmap(BITMAP_WIDTH, BITMAP_HEIGHT);
    bitmap.pixels = drawBitmap(glyphs);
    page.paste(bitmap, margin, margin);
    std::size_t top = BITMAP_HEIGHT + 2 * margin;
    for (const std::string_view sample : SAMPLES) {
        const Picture line = setLine(glyphs, sample);
        page.paste(line, margin, top);
        page.paste(shrink(line, SMALL_LINE), margin, top + LINE_HEIGHT);
        top += LINE_HEIGHT + SMALL_LINE + margin;
    }

    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(page.width);
    image.height = static_cast<png_uint_32>(page.height);
    image.format = PNG_FORMAT_GRAY;
    if (png_image_write_to_file(&image, file.c_str(), 0, page.pixels.data(), 0, nullptr) == 0) {
        throw std::runtime_error(file + ": " + image.message);
    }
}

}  // namespace fontgen
