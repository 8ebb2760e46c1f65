#pragma once

#include <string>

/// The files of a GPU driver, which this machine need not have, as real files in a folder of the benchmark:
/// the executable's fopen() takes paths below /sys there. Everything else is the machine's own.
namespace bench {

/// Where fopen() really goes for this path.
std::string redirected(const std::string& path);

/// Creates the files. Returns false with a message on standard error when it cannot.
bool createDriverFiles();
void removeDriverFiles();

}  // namespace bench
