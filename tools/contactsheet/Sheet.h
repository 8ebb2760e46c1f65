#pragma once

#include "software/Image.h"

#include <cstdint>
#include <string>
#include <vector>

/// A picture with a line of text below it.
struct CaptionedPicture {
    software::Image image;
    std::string caption;  ///< in characters of the overlay's font; others are left out
};

/// The pictures in their own sizes side by side, `columns` (at least 1) in a row. Every cell is as large as
/// the largest picture.
software::Image makeSheet(const std::vector<CaptionedPicture>& pictures, std::uint32_t columns);
