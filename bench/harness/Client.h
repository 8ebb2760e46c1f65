#pragma once

#include "Candidates.h"

#include <string>
#include <vector>

namespace bench {

/// The conditions in which the client runs, the same for every candidate.
struct Mode {
    std::string name;   ///< in file names
    std::string title;  ///< of the table
    Environment environment;
    int rate;           ///< frames per second by the program's clock; 0: as fast as it runs
    int warmUp;         ///< frames
    int frames;         ///< how many are timed
    int countedWarmUp;  ///< frames
    int countedFrames;  ///< in which instructions are counted
    int countedRate;    ///< like `rate`, while they are counted, which slows the program down
    bool hasPixels;     ///< whether the window shows the overlay
    bool hasTargets = true;
    int pace = 0;       ///< frames per second of real time, whose intervals are measured; 0: no pace
    Command size = {};  ///< options of the client
};

/// First the modes without pixels, then those with them.
const std::vector<Mode>& modes(Api api);

/// The costs of a run for the client's rendering thread, in microseconds a frame.
struct Times {
    double swap = 0.0;
    double frame = 0.0;
    std::vector<double> intervals;  ///< from swap to swap in milliseconds, in a paced mode
};

/// Runs the client with each candidate. Leaves the files of the runs in a folder.
class Client {
public:
    Client(std::string program, std::string folder)
        : mProgram(std::move(program)), mFolder(std::move(folder)) {}

    /// Does one run. Prints why and returns false when it fails, or when the program did not load the
    /// candidate's library.
    bool measure(const Candidate& candidate, const Mode& mode, Times& times) const;

    /// Counts the rendering thread's instructions a frame with callgrind. Prints why and returns false when
    /// it fails.
    bool count(const Candidate& candidate, const Mode& mode, double& instructions) const;

    /// Computes how many of the window's pixels the candidate changed in its last measured run, in
    /// thousandths. Prints why and returns false when it fails.
    bool compare(const Candidate& bare, const Candidate& candidate, const Mode& mode, double& share) const;

private:
    std::string path(const Candidate& candidate, const Mode& mode, const std::string& suffix) const;
    bool runClient(const Candidate& candidate, const Mode& mode, int rate, Command tool,
                   const Command& options) const;

    std::string mProgram;
    std::string mFolder;
};

}  // namespace bench
