#pragma once

#include "opengl/gl/Functions.h"
#include "software/Image.h"

/// An application's picture that every API can paint alike: a checkerboard of dull and light blocks, so that
/// what is translucent shows and a small picture of it can be told from others.
void paintBlocks(software::Image& image);
void paintBlocks(const opengl::Functions& gl, int width, int height);
