#pragma once

#include <string>

namespace demo {

struct Options;

/// Writes the properties in the options and those that show the overlay in this process, and publishes them.
/// Returns an empty text, or what went wrong.
std::string writeSettings(const Options& options);

}  // namespace demo
