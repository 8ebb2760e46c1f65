#pragma once

#include <array>
#include <cstdint>
#include <glm/vec4.hpp>

namespace drawlist {

/// A drawing colour. Clamps its components to 0..1; NaN counts as 0.
class Paint {
public:
    explicit Paint(const glm::vec4& color);

    /// With the alpha of a pixel that is covered in part, 0..1.
    std::array<std::uint8_t, 4> covering(float coverage) const {
        if (coverage == 1.0F) {
            return mFull;
        }
        std::array<std::uint8_t, 4> color = mFull;
        color[3] = coverage == 0.0F ? std::uint8_t{0} : alphaOf(coverage);
        return color;
    }

    /// The same colour, more transparent by a factor 0..1.
    Paint fainter(float factor) const;

    /// The same colour across a stroke's profile in the glyph texture, see GlyphCache.
    Paint along(std::uint16_t profile) const {
        Paint paint = *this;
        paint.mProfile = profile;
        return paint;
    }

    /// Row of the profile; 0: none.
    std::uint16_t profile() const { return mProfile; }

    bool isVisible() const { return mAlpha > 0.0F; }

private:
    std::uint8_t alphaOf(float coverage) const;

    std::array<std::uint8_t, 4> mFull;
    float mAlpha;  ///< 0..255
    std::uint16_t mProfile = 0;
};

}  // namespace drawlist
