#pragma once

#include "core/RenderingApiType.h"

namespace scene {
class Overlay;
}

namespace entry {

/// Hands the figures and the last frames' times out to whoever asks for them (ostra/FigureReport.h), once
/// each time they have been brought up to date. While somebody asks, all figures of the catalogue are read.
/// Call it in each frame with the overlay, under the lock around the library's work. Only copies into a fixed
/// block; takes no lock, makes no system call and allocates nothing.
void handOutFigures(scene::Overlay& overlay, core::RenderingApiType api);

}  // namespace entry
