#pragma once

#include "simulator/Script.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Linked into an executable (CMake target device_simulator), puts a simulated device in the place of the
/// machine: fopen() then answers for the device's kernel and driver files, the system-property functions for
/// its properties, and the counter source of KordanixCoreSimulated for its GPU. Everything the device does
/// not have is passed through.
///
/// The environment variable KORDANIX_DEVICE chooses the device: a name in the devices folder or the path of a
/// device's folder. It is read once, at the first call that might be answered, which is while
/// libKordanixCore.so is loaded; a program that takes the device from its command line sets the variable and
/// executes itself again. Without it nothing is simulated. Any thread.
namespace simulator {

/// Whether a device is simulated.
bool isActive();

/// Why the device that was chosen is not simulated; empty when it is, or when none was chosen. It has been
/// logged as well.
const std::string& deviceError();

/// The devices of the devices folder, in alphabetical order.
std::vector<std::string> deviceNames();

/// The time of the simulated device in seconds: wall-clock time since the program started, unless setTime()
/// has stopped it.
double now();

/// Stops the device's time at this moment, from 0, until the next call.
void setTime(double seconds);

/// Lets the device's time run again, as if it had never been stopped.
void useWallClock();

/// A figure of the device's script at this time; nothing without a device that has one of this name.
std::optional<double> figureAt(const std::string& name, double seconds);

/// The frame that the device's GPU is at work on at this time, with its render passes; nothing without a
/// device that has some. For the frame that a capture took its samples in, ask for the time of the first
/// sample: a capture always begins together with a frame.
std::optional<ScriptedFrame> frameAt(double seconds);

}  // namespace simulator
