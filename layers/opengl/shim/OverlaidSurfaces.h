#pragma once

#include <cstdint>

/// Which surfaces, of EGL or GLX, have had the overlay in their last frames. A program that redraws only what
/// has changed since its buffer was last used must redraw all of a buffer that has the overlay. Any thread;
/// never waits.
namespace opengl {

/// Call it after each swap of a surface, on the thread that swapped.
void noteSwap(std::uintptr_t surface, bool hasOverlay);

/// Whether the buffer of that age, counted as EGL counts it, may have the overlay in it. False for an age
/// of 0.
bool isBufferOverlaid(std::uintptr_t surface, int age);

/// Whether the surface's last frame had the overlay.
bool isOverlaid(std::uintptr_t surface);

}  // namespace opengl
