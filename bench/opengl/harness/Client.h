#pragma once

#include "Candidates.h"

#include <string>
#include <vector>

namespace bench {

/// Under which conditions the client runs, the same for every candidate.
struct Mode {
    std::string name;   ///< for files
    std::string title;  ///< for the table
    Environment environment;
    int rate;           ///< frames a second by the program's clock; 0: as fast as it runs
    int warmUp;         ///< frames
    int frames;         ///< whose times are taken
    int countedWarmUp;  ///< frames
    int countedFrames;  ///< whose instructions are counted
    bool hasPixels;     ///< whether the overlay can be seen in the window
    int pace = 0;       ///< frames a second of real time, whose intervals are what is measured; 0: no matter
    Command size = {};  ///< options of the client
};

/// With the pixels taken out, then with them.
const std::vector<Mode>& modes();

/// What one run of the client cost its rendering thread, in microseconds a frame.
struct Times {
    double swap = 0.0;
    double frame = 0.0;
    std::vector<double> intervals;  ///< from swap to swap in milliseconds, of a paced mode
};

/// Runs the client under the candidates. Files of the runs go to a folder, which stays.
class Client {
public:
    Client(std::string program, std::string folder)
        : mProgram(std::move(program)), mFolder(std::move(folder)) {}

    /// One run. False: a reason is printed, also when the candidate's library was not in the program.
    bool measure(const Candidate& candidate, const Mode& mode, Times& times) const;

    /// Instructions a frame of the rendering thread, counted by callgrind. False: a reason is printed.
    bool count(const Candidate& candidate, const Mode& mode, double& instructions) const;

    /// How many of the window's pixels the candidate changed in its last measured run, in thousandths.
    /// False: a reason is printed.
    bool compare(const Candidate& bare, const Candidate& candidate, const Mode& mode, double& share) const;

private:
    std::string path(const Candidate& candidate, const Mode& mode, const std::string& suffix) const;
    bool runClient(const Candidate& candidate, const Mode& mode, Command tool, const Command& options) const;

    std::string mProgram;
    std::string mFolder;
};

}  // namespace bench
