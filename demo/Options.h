#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace demo {

/// What the command line asks for.
struct Options {
    std::uint32_t width = 740;
    std::uint32_t height = 360;
    double seconds = 10.0;
    double rate = 0.0;                                          ///< frames per second; 0: see frameRate()
    std::string device;                                         ///< a simulated device; empty: this machine
    std::vector<std::pair<std::string, std::string>> settings;  ///< properties, by full or short name
    std::string png = "kordanix-demo.png";
    std::uint64_t every = 0;   ///< also writes a picture every so many frames; 0: only at the end
    double captureAt = -1.0;   ///< seconds until it presses the capture key; negative: never
    bool isFixedStep = false;  ///< advances the time by one frame's length a frame and never waits
    bool isPrivate = false;    ///< has settings of its own, not the user's
};

/// Returns the frames per second at this time after the start: the options' rate, else the simulated
/// device's, else 60.
double frameRate(const Options& options, double seconds);

/// Parses the command line. Returns false when the program must end with `exitCode`: it has printed the help
/// or explained an error.
bool parseOptions(int argc, char** argv, Options& options, int& exitCode);

}  // namespace demo
