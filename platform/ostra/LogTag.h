#pragma once

namespace platform {

/// What the companion's lines in the log begin with.
constexpr const char* TAG = "Ostra";

}  // namespace platform
