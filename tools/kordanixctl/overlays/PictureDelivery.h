#pragma once

#include <chrono>
#include <csignal>
#include <string>

namespace control {

/// The file that a process is asked to fill with its picture (see ostra/PictureRequest.h), empty at first; it
/// goes with the object. Meanwhile the signals that usually end a program are held back, so that they leave
/// nothing behind either.
class PictureDelivery {
public:
    using Clock = std::chrono::steady_clock;

    explicit PictureDelivery(std::string path);
    ~PictureDelivery();
    PictureDelivery(const PictureDelivery&) = delete;
    PictureDelivery& operator=(const PictureDelivery&) = delete;

    /// Makes the file, or takes over one that an ended program left. While another program waits for a
    /// picture of the same process, waits for that. Returns an empty text, or why there is no file.
    std::string open(Clock::time_point end);

    /// Sleeps for a moment; false when it is time to end.
    bool wait() const;

    enum class State {
        AWAITED,
        ARRIVED,
        FAILED,  ///< taken away by the process
    };
    State state() const;

    /// The picture's bytes, once it has arrived. Returns an empty text, or why it cannot be read.
    std::string read(std::string& bytes) const;

private:
    bool take();

    std::string mPath;
    int mFile = -1;  ///< of the empty file, locked for as long as somebody waits
    sigset_t mSignals = {};
    sigset_t mPrevious = {};
};

}  // namespace control
