#include "Sheet.h"

#include "drawers/TextDrawer.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"

#include <algorithm>
#include <glm/vec2.hpp>
#include <glm/vec4.hpp>
#include <memory>

namespace {

// Pixels.
constexpr std::uint32_t GAP = 12;
constexpr std::uint32_t CAPTION_HEIGHT = 20;

constexpr software::Pixel PAPER = {34, 36, 42, 255};
constexpr glm::vec4 INK(0.9F, 0.9F, 0.9F, 1.0F);

}  // namespace

software::Image makeSheet(const std::vector<CaptionedPicture>& pictures, std::uint32_t columns) {
    glm::uvec2 largest(1, 1);
    for (const CaptionedPicture& picture : pictures) {
        largest = {std::max(largest.x, picture.image.mWidth), std::max(largest.y, picture.image.mHeight)};
    }
    const glm::uvec2 pitch = largest + glm::uvec2(GAP, GAP + CAPTION_HEIGHT);
    const auto count = static_cast<std::uint32_t>(pictures.size());
    const std::uint32_t rows = (count + columns - 1) / columns;
    software::Surface surface(GAP + std::min(columns, count) * pitch.x, GAP + rows * pitch.y);
    surface.mImage.fill(PAPER);

    software::SoftwareFactory factory(surface);
    const std::unique_ptr<drawer::TextDrawer> text = factory.createText();
    text->setTextColor(INK);
    const glm::vec2 sheet(factory.getSurfaceSize());
    for (std::uint32_t i = 0; i < count; ++i) {
        const software::Image& image = pictures[i].image;
        const glm::vec2 corner(GAP + i % columns * pitch.x, GAP + i / columns * pitch.y);
        surface.mRasterizer.drawImage(surface.mImage, surface.clip(), image,
                                      {corner.x, corner.y, corner.x + static_cast<float>(image.mWidth),
                                       corner.y + static_cast<float>(image.mHeight)});
        text->mPosition = (corner + glm::vec2(0.0F, image.mHeight)) / sheet;
        text->mSize = glm::vec2(largest.x, CAPTION_HEIGHT) / sheet;
        text->setText(pictures[i].caption);
        text->draw();
    }
    return std::move(surface.mImage);
}
