#pragma once

#include <string>

namespace control {

/// Writes what an application gave as its picture (see overlays/Pam.h) as a PNG. Returns an empty text, or
/// what went wrong.
std::string savePhonePicture(const std::string& bytes, const std::string& path);

}  // namespace control
