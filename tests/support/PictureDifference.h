#pragma once

#include "software/Image.h"

/// What may differ between two APIs' pictures, in steps of 255 a channel: where neighbouring pixels are
/// equal, rounding; at edges of anti-aliased shapes, the form of what covers a pixel in part.
constexpr int LARGEST_INSIDE = 1;
constexpr int LARGEST_AT_EDGES = 128;
constexpr double LARGEST_MEAN_AT_EDGES = 1.1;

/// Compilers round floating-point arithmetic differently: between two builds a channel may differ by this
/// much anywhere, and by more in this share of the pixels, where an edge fell on another side of a rounding
/// limit.
constexpr int LARGEST_ROUNDING = 2;
constexpr double LARGEST_SHARE = 0.0005;

struct PictureDifference {
    int largestInside = 0;
    int largestAtEdges = 0;
    double meanAtEdges = 0.0;
    double share = 0.0;  ///< of the pixels that differ by more than LARGEST_ROUNDING
};

/// An edge is where a pixel of the expected picture is not equal to all its neighbours. Pictures without
/// pixels or of unequal size differ by everything.
PictureDifference comparePictures(const software::Image& expected, const software::Image& drawn);
