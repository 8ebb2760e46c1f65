#pragma once

#include <optional>
#include <string_view>

namespace scene {

/// Reads "0.5" to "1.8", with at most two decimals. Nothing for any other text. The same in every locale.
std::optional<float> parseScale(std::string_view text);

}  // namespace scene
