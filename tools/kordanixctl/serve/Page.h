#pragma once

#include <string_view>

namespace control {

/// The page: page.html, with page.css and page.js in it. "@NONCE@" in it stands for a word that the answer's
/// header must also name, so that nothing else than this page's own script and style is run.
extern const std::string_view PAGE;

}  // namespace control
