#include "PictureCommand.h"

#include "Addressing.h"
#include "Complaint.h"
#include "OverlayState.h"
#include "Pam.h"
#include "ProcessInfo.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"
#include "software/Image.h"
#include "software/Png.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

namespace control {

namespace {

using Clock = std::chrono::steady_clock;

constexpr long POLL_PERIOD_NS = 5'000'000;

/// The file that a process is asked to fill, empty at first; it goes with the object. Meanwhile the signals
/// that usually end a program are held back, so that they leave nothing behind either.
class Delivery {
public:
    explicit Delivery(std::string path) : mPath(std::move(path)), mFile(mPath) {
        sigemptyset(&mSignals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
            sigaddset(&mSignals, signal);
        }
        pthread_sigmask(SIG_BLOCK, &mSignals, &mPrevious);
    }
    ~Delivery() {
        unlink(mPath.c_str());
        unlink((mPath + ".part").c_str());
        pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr);
    }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    bool isOpen() const { return mFile.good(); }

    /// Sleeps for a moment; false when it is time to end.
    bool wait() const {
        const timespec moment = {0, POLL_PERIOD_NS};
        const int signal = sigtimedwait(&mSignals, nullptr, &moment);
        if (signal > 0) {
            raise(signal);  // taken as soon as it is not held back any more
        }
        return signal <= 0;
    }

    enum class State { AWAITED, ARRIVED, FAILED };

    State state() const {
        struct stat status = {};
        if (stat(mPath.c_str(), &status) != 0) {
            return State::FAILED;  // taken away by the process
        }
        return status.st_size > 0 ? State::ARRIVED : State::AWAITED;
    }

    std::string contents() const {
        std::ifstream file(mPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    std::string mPath;
    std::ofstream mFile;
    sigset_t mSignals = {};
    sigset_t mPrevious = {};
};

/// Returns the process to ask; nothing, with the reason in `error`, when there is none or more than one.
std::optional<pid_t> findProcess(const std::string& directory, std::optional<pid_t> process,
                                 std::string& error) {
    const std::vector<pid_t> found = recipients(directory, process);
    if (found.size() == 1) {
        return found.front();
    }
    error = found.empty() ? "no overlay is running: no process listens in " + directory
                          : "several programs could be meant:";
    for (const pid_t each : found) {
        error += "\n  " + std::to_string(each) + ' ' + processName(each);
    }
    return std::nullopt;
}

/// Waits for the picture. Returns an empty text, or why none came.
std::string await(const Delivery& delivery, pid_t process, double seconds) {
    const std::string who = "process " + std::to_string(process);
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(std::clamp(seconds, 0.0, 1e6)));
    while (delivery.state() == Delivery::State::AWAITED) {
        if (Clock::now() >= end) {
            return who + " presented no frame in that time";
        }
        if (!startTime(process)) {
            return who + " has ended";
        }
        if (!delivery.wait()) {
            return "interrupted";
        }
    }
    return delivery.state() == Delivery::State::ARRIVED
               ? std::string()
               : who + " could not write its picture; its log may say why";
}

}  // namespace

ExitCode savePicture(std::optional<pid_t> process, const std::string& path, double seconds,
                     std::ostream& err) {
    const platform::RuntimeDirectory directory = platform::openRuntimeDirectory();
    std::string error = directory.error;
    const std::optional<pid_t> target =
        error.empty() ? findProcess(directory.path, process, error) : std::nullopt;
    if (!target) {
        return fail(error, err);
    }
    const std::string who = "process " + std::to_string(*target) + ' ';
    const std::vector<pid_t> listening = platform::listeningProcesses(directory.path);
    if (std::find(listening.begin(), listening.end(), *target) == listening.end()) {
        return fail(who + "does not show an overlay: it has none, or has presented no frame yet", err);
    }
    const std::string obstacle = overlayObstacle(processName(*target));
    if (!obstacle.empty()) {
        return fail(who + obstacle, err);
    }
    const Delivery delivery(platform::picturePath(directory.path, *target));
    if (!delivery.isOpen()) {
        return fail("cannot write to " + directory.path + ": " + std::generic_category().message(errno), err);
    }
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::PICTURE;
    error = platform::sendMessage(directory.path, *target, message);
    if (error.empty()) {
        error = await(delivery, *target, seconds);
    }
    if (!error.empty()) {
        return fail(error, err);
    }
    software::Image image;
    if (!parsePam(delivery.contents(), image)) {
        return fail(who + "wrote something other than a picture", err);
    }
    return software::writePng(image, path, error) ? SUCCESS : fail(error, err);
}

}  // namespace control
