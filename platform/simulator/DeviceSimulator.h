#pragma once

#include "simulator/Script.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Link it into an executable (CMake target device_simulator) to simulate a device in place of the machine:
/// fopen() then answers for the device's kernel and driver files, the system-property functions for its
/// properties, and the counter source of KordanixCoreSimulated for its GPU. Everything that the device does
/// not have comes from the machine.
///
/// The environment variable KORDANIX_DEVICE chooses the device: a name in the devices folder or the path of a
/// device's folder. The first call that might need it reads it, once, while libKordanixCore.so is being
/// loaded. So a program that takes the device from its command line sets the variable and executes itself
/// again. Without the variable nothing is simulated. Any thread.
namespace simulator {

/// Whether a device is simulated.
bool isActive();

/// Says why the chosen device is not simulated, which the log says too; empty when it is, or when none was
/// chosen.
const std::string& deviceError();

/// The devices of the devices folder, in alphabetical order.
std::vector<std::string> deviceNames();

/// Returns the simulated device's time in seconds: wall-clock time since the program started, or the time
/// that setTime() set.
double now();

/// Stops the device's time at `seconds` until the next call; negative and non-finite times count as 0.
void setTime(double seconds);

/// Lets the device's time run again as if it had never stopped.
void useWallClock();

/// Returns a figure of the device's script at this time; nothing without a device or without such a figure.
std::optional<double> figureAt(const std::string& name, double seconds);

/// Returns the frame that the device's GPU works on at this time, with its render passes; nothing without a
/// device that has frames. A capture always begins at the start of a frame: to get the frame of its samples,
/// ask for the time of the first one.
std::optional<ScriptedFrame> frameAt(double seconds);

}  // namespace simulator
