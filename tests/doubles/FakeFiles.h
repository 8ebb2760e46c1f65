#pragma once

#include <string>

/// Kernel and driver files in memory. The test executable's fopen() answers for every path below /proc and
/// /sys from here; all other paths go to the real file system.
namespace doubles {

/// Gives a file its content, or takes it away so that opening it fails with ENOENT.
void setFile(const std::string& path, const std::string& content);
void removeFile(const std::string& path);
void removeAllFiles();

/// How often the path has been asked for since the process started, whether it was there or not.
unsigned timesOpened(const std::string& path);

/// How many served files are open now.
int openFiles();

}  // namespace doubles
