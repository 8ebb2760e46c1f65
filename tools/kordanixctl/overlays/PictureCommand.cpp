#include "overlays/PictureCommand.h"

#include "Diagnostic.h"
#include "io/ProcessStart.h"
#include "ostra/PictureRequest.h"
#include "ostra/ProcessSocket.h"
#include "overlays/ChosenOverlays.h"
#include "overlays/LogsFolder.h"
#include "overlays/OverlayState.h"
#include "overlays/Pam.h"
#include "overlays/PictureDelivery.h"
#include "properties/Notices.h"
#include "software/Image.h"
#include "software/Png.h"

#include <strings.h>

#include <algorithm>
#include <sstream>
#include <thread>

namespace control {

namespace {

using Clock = PictureDelivery::Clock;

bool endsInPng(const std::string& path) {
    constexpr std::string_view ENDING = ".png";
    return path.size() > ENDING.size() &&
           strcasecmp(path.c_str() + path.size() - ENDING.size(), ENDING.data()) == 0;
}

/// "5 seconds".
std::string secondsText(double seconds) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << seconds << (seconds == 1.0 ? " second" : " seconds");
    return text.str();
}

/// Why the process has sent no picture, as the end of a sentence.
std::string describeSilence(const std::string& directory, pid_t process, double seconds) {
    const std::string obstacle = findObstacle(directory, process);
    if (!obstacle.empty()) {
        return obstacle;
    }
    // A layer that writes no notes does not write pictures either.
    const bool isTalkative = OverlayState(directory).note(process) != nullptr;
    return (isTalkative ? "presented no frame in " : "gave no picture in ") + secondsText(seconds) +
           (isTalkative ? "; it may draw only when something changes or its window is seen"
                        : "; its layer may give none") +
           " ('--seconds' waits longer)";
}

/// Waits for the picture. Returns an empty text, or why none came.
std::string await(const PictureDelivery& delivery, const std::string& directory, pid_t process,
                  double seconds, Clock::time_point end) {
    while (delivery.state() == PictureDelivery::State::AWAITED) {
        if (Clock::now() >= end) {
            return describeSilence(directory, process, seconds);
        }
        if (!platform::processStart(process)) {
            return "has ended";
        }
        if (!delivery.wait()) {
            return "was not waited for: interrupted";
        }
    }
    return delivery.state() == PictureDelivery::State::ARRIVED
               ? std::string()
               : "could not write its picture; its log may say why";
}

}  // namespace

std::string fetchPicture(const std::string& directory, pid_t process, double seconds,
                         software::Image& image) {
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(std::clamp(seconds, 0.0, 1e6)));
    PictureDelivery delivery(platform::picturePath(directory, process));
    std::string error = delivery.open(end);
    if (!error.empty()) {
        return error;
    }
    platform::ProcessMessage message;
    message.kind = platform::ProcessMessage::Kind::PICTURE;
    error = platform::sendMessage(directory, process, message);
    if (!error.empty()) {
        return error;
    }
    const std::string who = "process " + std::to_string(process) + ' ';
    error = await(delivery, directory, process, seconds, end);
    if (!error.empty()) {
        return who + error;
    }
    std::string bytes;
    error = delivery.read(bytes);
    if (!error.empty()) {
        return error;
    }
    return parsePam(bytes, image) ? std::string() : who + "wrote something other than a picture";
}

ExitCode savePicture(std::optional<pid_t> process, const std::string& path, double seconds, std::ostream& out,
                     std::ostream& err) {
    const bool isNamed = !path.empty();
    if (isNamed && !endsInPng(path)) {
        return fail(path + ": pictures are PNG files; the name must end in .png", err, USAGE_ERROR);
    }
    const ChosenOverlays chosen = chooseOverlay(process, Overlay::SHOWN);
    std::string error = chosen.error;
    software::Image image;
    std::string file = path;
    if (error.empty() && !isNamed) {
        file = newLogsFile(chosen.processes.front(), ".png", error);
        std::this_thread::sleep_for(noticeRest());  // what the last key did is not for this picture
    }
    if (error.empty()) {
        error = fetchPicture(chosen.directory, chosen.processes.front(), seconds, image);
    }
    const bool isSaved = error.empty() && software::writePng(image, file, error);
    if (!isNamed) {
        showNotice(isSaved ? "Picture saved" : "No picture");
    }
    if (isSaved && !isNamed) {
        out << "Saved " << file << '\n';
    }
    return isSaved ? SUCCESS : fail(error, err);
}

}  // namespace control
