#pragma once

#include <string>

/// Provides the files of a GPU driver, which this machine may lack, as real files in the benchmark's folder:
/// the executable's fopen() redirects paths below /sys there. All other files are the machine's own.
namespace bench {

/// The path that fopen() really opens for this path.
std::string redirected(const std::string& path);

/// Creates the files. On failure returns false, with a message on standard error.
bool createDriverFiles();
void removeDriverFiles();

}  // namespace bench
