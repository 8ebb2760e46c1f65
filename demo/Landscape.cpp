#include "Landscape.h"

#include <algorithm>
#include <cmath>

namespace demo {

namespace {

using software::Image;
using software::Pixel;

struct Color {
    float red;
    float green;
    float blue;
};

Color mix(const Color& from, const Color& to, float share) {
    return {from.red + (to.red - from.red) * share, from.green + (to.green - from.green) * share,
            from.blue + (to.blue - from.blue) * share};
}

std::uint8_t toByte(float value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0F, 255.0F)));
}

Pixel toPixel(const Color& color) {
    return {toByte(color.red), toByte(color.green), toByte(color.blue), 255};
}

void blend(Pixel& pixel, const Color& color, float coverage) {
    const Color below{static_cast<float>(pixel.red), static_cast<float>(pixel.green),
                      static_cast<float>(pixel.blue)};
    pixel = toPixel(mix(below, color, coverage));
}

constexpr Color SKY_TOP{24, 30, 66};
constexpr Color SKY_MIDDLE{92, 72, 120};
constexpr Color SKY_HORIZON{236, 150, 104};
constexpr float HORIZON = 0.72F;  // where the sky ends, as a fraction of the height

/// Lengths are fractions of the picture's height.
struct Hills {
    Color color;
    float base;       // height of the range
    float amplitude;  // of its outline
    float wavelength;
    float speed;  // per second
    float trees;  // height of its trees
};

constexpr Hills HILLS[] = {
    {{150, 102, 124}, 0.62F, 0.085F, 1.10F, 0.012F, 0.0F},
    {{98, 72, 108}, 0.70F, 0.070F, 0.80F, 0.030F, 0.0F},
    {{56, 52, 84}, 0.79F, 0.055F, 0.65F, 0.070F, 0.0F},
    {{22, 28, 48}, 0.90F, 0.035F, 0.55F, 0.160F, 0.055F},
};

/// A wave from -1 to 1 with a very long period.
float outline(float phase) {
    return 0.55F * std::sin(phase) + 0.3F * std::sin(2.3F * phase + 1.7F) +
           0.15F * std::sin(5.1F * phase + 0.4F);
}

/// A row of firs with different heights, 0 to 1.
float firs(float position) {
    const float index = std::floor(position);
    const float inside = std::abs(position - index - 0.5F) * 2.0F;
    // Any scrambling of the number would do.
    const auto number = static_cast<std::uint32_t>(static_cast<std::int32_t>(index)) * 2654435761U;
    const float height = 0.3F + 0.7F * static_cast<float>(number >> 24) / 255.0F;
    return std::max(0.0F, 1.0F - inside) * height;
}

struct Balloon {
    Color light;
    Color dark;
    float x;  // fraction of the width, at the start
    float y;  // fraction of the height
    float radius;
    float speed;
};

constexpr Balloon BALLOONS[] = {
    {{222, 92, 74}, {178, 58, 62}, 0.30F, 0.36F, 0.052F, 0.006F},
    {{236, 188, 92}, {204, 140, 66}, 0.66F, 0.50F, 0.034F, 0.010F},
    {{96, 148, 190}, {64, 106, 156}, 0.86F, 0.33F, 0.026F, 0.004F},
};

void drawSun(Image& image) {
    const auto height = static_cast<float>(image.mHeight);
    const float centerX = static_cast<float>(image.mWidth) * 0.56F;
    const float centerY = height * 0.56F;
    const float radius = height * 0.075F;
    const float glow = height * 0.30F;
    const int left = std::max(0, static_cast<int>(centerX - glow));
    const int right = std::min(static_cast<int>(image.mWidth), static_cast<int>(centerX + glow) + 1);
    const int top = std::max(0, static_cast<int>(centerY - glow));
    const int bottom = std::min(static_cast<int>(image.mHeight), static_cast<int>(centerY + glow) + 1);
    for (int y = top; y < bottom; ++y) {
        Pixel* row = image.row(static_cast<std::size_t>(y));
        for (int x = left; x < right; ++x) {
            const float dx = static_cast<float>(x) + 0.5F - centerX;
            const float dy = static_cast<float>(y) + 0.5F - centerY;
            const float distance = std::sqrt(dx * dx + dy * dy);
            const float disc = std::clamp(radius - distance + 0.5F, 0.0F, 1.0F);
            const float halo = std::max(0.0F, 1.0F - distance / glow);
            blend(row[x], {255, 214, 150}, std::max(disc, 0.55F * halo * halo));
        }
    }
}

void drawBalloon(Image& image, const Balloon& balloon, double seconds) {
    const auto width = static_cast<float>(image.mWidth);
    const auto height = static_cast<float>(image.mHeight);
    const auto time = static_cast<float>(seconds);
    const float radius = balloon.radius * height;
    // Wraps around a little outside the picture.
    const float way = balloon.x + 0.1F + time * balloon.speed;
    const float centerX = ((way - std::floor(way / 1.2F) * 1.2F) - 0.1F) * width;
    const float centerY = (balloon.y + 0.008F * std::sin(time * 0.8F + balloon.x * 9.0F)) * height;
    const int left = std::max(0, static_cast<int>(centerX - radius - 1.0F));
    const int right = std::min(static_cast<int>(image.mWidth), static_cast<int>(centerX + radius + 2.0F));
    const int top = std::max(0, static_cast<int>(centerY - radius - 1.0F));
    const int bottom = std::min(static_cast<int>(image.mHeight), static_cast<int>(centerY + 2.1F * radius));
    for (int y = top; y < bottom; ++y) {
        Pixel* row = image.row(static_cast<std::size_t>(y));
        for (int x = left; x < right; ++x) {
            const float dx = (static_cast<float>(x) + 0.5F - centerX) / radius;
            const float dy = (static_cast<float>(y) + 0.5F - centerY) / radius;
            // A sphere that narrows towards the basket.
            const float half =
                dy < 0.0F ? std::sqrt(std::max(0.0F, 1.0F - dy * dy)) : std::max(0.0F, std::cos(dy * 1.15F));
            const float cover = dy > -1.0F && dy < 1.25F ? (half - std::abs(dx)) * radius + 0.5F : 0.0F;
            const bool isDark =
                half > 0.0F && std::sin(std::asin(std::clamp(dx / half, -1.0F, 1.0F)) * 6.0F) > 0.0F;
            blend(row[x], isDark ? balloon.dark : balloon.light, std::clamp(cover, 0.0F, 1.0F));
            const bool isBasket = std::abs(dx) < 0.16F && dy > 1.55F && dy < 1.85F;
            const bool isRope = dy >= 1.25F && dy < 1.6F;
            const float rope = isRope ? (0.015F - std::abs(std::abs(dx) - 0.12F)) * radius + 0.5F : 0.0F;
            blend(row[x], {70, 48, 44}, isBasket ? 1.0F : std::clamp(rope, 0.0F, 1.0F));
        }
    }
}

}  // namespace

void Landscape::drawSky(Image& image) const {
    for (std::uint32_t y = 0; y < image.mHeight; ++y) {
        const float share =
            std::min(1.0F, static_cast<float>(y) / (static_cast<float>(image.mHeight) * HORIZON));
        const Color color = share < 0.55F ? mix(SKY_TOP, SKY_MIDDLE, share / 0.55F)
                                          : mix(SKY_MIDDLE, SKY_HORIZON, (share - 0.55F) / 0.45F);
        std::fill_n(image.row(y), image.mWidth, toPixel(color));
    }
}

void Landscape::drawHills(Image& image, double seconds) {
    const auto height = static_cast<float>(image.mHeight);
    for (std::size_t range = 0; range < HILL_COUNT; ++range) {
        const Hills& hills = HILLS[range];
        const float shift = static_cast<float>(seconds) * hills.speed;
        mTops[range].resize(image.mWidth);
        for (std::uint32_t x = 0; x < image.mWidth; ++x) {
            const float place = static_cast<float>(x) / height + shift;
            const float wave = outline(place / hills.wavelength * 6.2831853F + static_cast<float>(range));
            const float trees = hills.trees > 0.0F ? hills.trees * firs(place * 26.0F) : 0.0F;
            mTops[range][x] = (hills.base - hills.amplitude * wave - trees) * height;
        }
    }
    for (std::size_t range = 0; range < HILL_COUNT; ++range) {
        const std::vector<float>& tops = mTops[range];
        // The next nearer range hides everything below its own lowest point.
        float end = height;
        if (range + 1 < HILL_COUNT) {
            end = *std::max_element(mTops[range + 1].begin(), mTops[range + 1].end()) + 1.0F;
        }
        const int first = std::max(0, static_cast<int>(*std::min_element(tops.begin(), tops.end())));
        const int last = std::min(static_cast<int>(image.mHeight), static_cast<int>(end) + 1);
        const Pixel full = toPixel(HILLS[range].color);
        for (int y = first; y < last; ++y) {
            Pixel* row = image.row(static_cast<std::size_t>(y));
            const auto bottom = static_cast<float>(y + 1);
            for (std::size_t x = 0; x < tops.size(); ++x) {
                const float coverage = bottom - tops[x];
                if (coverage >= 1.0F) {
                    row[x] = full;
                } else if (coverage > 0.0F) {
                    blend(row[x], HILLS[range].color, coverage);
                }
            }
        }
    }
}

void Landscape::draw(Image& image, double seconds) {
    if (image.mWidth == 0 || image.mHeight == 0) {
        return;
    }
    drawSky(image);
    drawSun(image);
    for (const Balloon& balloon : BALLOONS) {
        drawBalloon(image, balloon, seconds);
    }
    drawHills(image, seconds);
}

}  // namespace demo
