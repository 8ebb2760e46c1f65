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
    double rate = 0.0;                                          ///< frames per second; 0: as frameRate() says
    std::string device;                                         ///< a simulated device; empty: this machine
    std::vector<std::pair<std::string, std::string>> settings;  ///< properties, by full or short name
    std::string png = "kordanix-demo.png";
    std::uint64_t every = 0;   ///< also a picture each so many frames; 0: only at the end
    double captureAt = -1.0;   ///< seconds after which the capture key is pressed; negative: never
    bool isFixedStep = false;  ///< time advances by one frame's length a frame, as fast as it goes
    bool isPrivate = false;    ///< settings of its own rather than the user's
};

/// Frames per second at this time after the start: those of the options, else those of the simulated device,
/// else 60.
double frameRate(const Options& options, double seconds);

/// Parses the command line. Returns false when the program is to end at once with `exitCode`: after help was
/// asked for, or after an error was explained.
bool parseOptions(int argc, char** argv, Options& options, int& exitCode);

}  // namespace demo
