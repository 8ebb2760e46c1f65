#include "scene/ScaleText.h"

#include <cstddef>

namespace scene {

namespace {

constexpr unsigned int SMALLEST_PERCENT = 50;
constexpr unsigned int LARGEST_PERCENT = 180;

}  // namespace

std::optional<float> parseScale(std::string_view text) {
    const auto digit = [text](std::size_t place) {
        return place < text.size() ? static_cast<unsigned int>(text[place] - '0') : 0U;
    };
    const bool isNumber = !text.empty() && text.size() != 2 && text.size() <= 4 &&
                          (text.size() == 1 || text[1] == '.') && digit(0) < 10 && digit(2) < 10 &&
                          digit(3) < 10;
    const unsigned int percent = 100 * digit(0) + 10 * digit(2) + digit(3);
    return isNumber && percent >= SMALLEST_PERCENT && percent <= LARGEST_PERCENT
               ? std::optional(static_cast<float>(percent) / 100.0F)
               : std::nullopt;
}

}  // namespace scene
