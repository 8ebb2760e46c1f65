#pragma once

#include "processes/EndSignals.h"

#include <chrono>
#include <string>

namespace control {

/// The file that a process fills with its picture (see ostra/PictureRequest.h). Empty at first; the
/// destructor removes it. Until then it blocks the signals that usually end a program, so that they leave no
/// file behind.
class PictureDelivery {
public:
    using Clock = std::chrono::steady_clock;

    explicit PictureDelivery(std::string path);
    ~PictureDelivery();
    PictureDelivery(const PictureDelivery&) = delete;
    PictureDelivery& operator=(const PictureDelivery&) = delete;

    /// Creates the file, or takes one that an ended program left. If another program is waiting for a picture
    /// of the same process, it waits for that one first. Returns an empty text, or why there is no file.
    std::string open(Clock::time_point end);

    /// Sleeps for a moment; false when a signal asks this program to end.
    bool wait() const;

    enum class State {
        AWAITED,
        ARRIVED,
        FAILED,  ///< the process removed the file
    };
    State state() const;

    /// Reads the picture once it has arrived. Returns an empty text, or why it cannot.
    std::string read(std::string& bytes) const;

private:
    bool take();

    std::string mPath;
    int mFile = -1;  ///< the empty file, locked while we wait
    EndSignals mSignals;
};

}  // namespace control
