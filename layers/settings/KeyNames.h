#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The keyboard's keys by the names that X has for them, such as "F12" or "XF86AudioMute".
namespace control {

/// X's number for what a key means (a keysym); 0 when there is no such name. Where this was built without X's
/// headers, any word has one.
std::uint32_t keyNumber(std::string_view name);

/// "did you mean 'F12'?", or where to look.
std::string keyHint(std::string_view name);

}  // namespace control
