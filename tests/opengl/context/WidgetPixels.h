#pragma once

#include "software/Image.h"

#include <vector>

/// Pixels in an area, and how many of them differ between two pictures.
struct PixelShare {
    int differing = 0;
    int all = 0;
};

/// Compares a program's pictures without and with the overlay, which are of one size: a share for each widget
/// that is on by default, and in the last place what is outside them all.
std::vector<PixelShare> compareWidgets(const software::Image& bare, const software::Image& overlaid);
