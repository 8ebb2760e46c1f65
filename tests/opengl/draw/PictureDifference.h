#pragma once

#include "software/Image.h"

/// What may differ, in steps of 255 a channel: where neighbouring pixels are equal, rounding; at edges of
/// anti-aliased shapes, the form of what covers a pixel in part.
constexpr int LARGEST_INSIDE = 1;
constexpr int LARGEST_AT_EDGES = 48;
constexpr double LARGEST_MEAN_AT_EDGES = 0.5;

/// Where a graph jumps from pixel to pixel.
constexpr int LARGEST_AT_JUMPS = 128;
constexpr double LARGEST_MEAN_AT_JUMPS = 1.0;

struct PictureDifference {
    int largestInside = 0;
    int largestAtEdges = 0;
    double meanAtEdges = 0.0;
};

/// An edge is where a pixel of the expected picture is not equal to all its neighbours. Pictures of unequal
/// size differ by everything.
PictureDifference comparePictures(const software::Image& expected, const software::Image& drawn);
