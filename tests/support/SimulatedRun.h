#pragma once

#include <functional>

namespace scene {
class Overlay;
class PrimitiveFactory;
}  // namespace scene

namespace support {

/// The overlay on the simulated device that KORDANIX_DEVICE names, in stepped time. The library reads which
/// device it is while it is loaded, so each run needs a new process. KORDANIX_RUNTIME_DIR names an empty
/// folder.

/// Switches the overlay on and publishes that with further settings, each "NAME=VALUE".
bool publishSettings(int count, char** settings);

/// Runs until the graphs are full and a frame has been captured. `paint` makes the application's picture and
/// `draw` has the overlay drawn, in those frames that somebody sees. Returns whether the overlay was shown in
/// the last one.
bool runSimulation(scene::PrimitiveFactory& factory, const std::function<void()>& paint,
                   const std::function<void(scene::Overlay&)>& draw);

}  // namespace support
