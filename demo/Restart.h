#pragma once

namespace demo {

struct Options;

/// The simulated device and the folder of the properties must be chosen before the library is loaded, and
/// the process must bear the demo's name. So the program starts itself once more with the right environment.
/// Returns true in the second start, which goes on; false when that start failed, with the reason printed
/// and `exitCode` set. A private folder of properties is made here and removed by removePrivateFolder().
bool restartIfNeeded(char** argv, const Options& options, int& exitCode);

/// Removes the private folder of properties with what is in it; does nothing without one.
void removePrivateFolder(const Options& options);

/// The name under which the process runs and for which the overlay is switched on.
extern const char* const PROCESS_NAME;

}  // namespace demo
