#pragma once

#include "software/Image.h"

#include <cstdint>
#include <string>
#include <vector>

/// A picture with a line of text below it.
struct CaptionedPicture {
    software::Image image;
    std::string caption;  ///< characters that the overlay's font lacks are dropped
};

/// Puts the pictures side by side at their own sizes, `columns` (at least 1) in a row. Every cell is as large
/// as the largest picture.
software::Image makeSheet(const std::vector<CaptionedPicture>& pictures, std::uint32_t columns);
