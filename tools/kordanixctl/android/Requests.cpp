#include "android/AdbTrouble.h"
#include "android/PhonePicture.h"
#include "android/Verbs.h"
#include "ostra/DumpNotice.h"
#include "ostra/android/Command.h"
#include "settings/PropertyTable.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace control::android {

namespace {

using Clock = std::chrono::steady_clock;
using State = platform::DumpNotice::State;

constexpr useconds_t POLL_PERIOD_US = 50'000;

std::string ownFile(const std::string& name) {
    return std::string(FILES) + '/' + OWN_FOLDER + '/' + name;
}

Clock::time_point endOfWait(const Session& session) {
    constexpr double YEAR = 365.0 * 24.0 * 3600.0;
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(
                              std::chrono::duration<double>(std::clamp(session.options.seconds, 0.0, YEAR)));
}

/// Makes sure that somebody is there to answer, whose files can be fetched, and finds its process.
std::string findListener(const Session& session, std::string& process) {
    Application ignored;
    std::string error = session.phone.examine(ignored);
    error = error.empty() ? session.phone.tryAs({"id"}) : error;
    error = error.empty() ? session.phone.findProcess(process) : error;
    if (error.empty() && process.empty() && !session.phone.adb().isShowing()) {
        error = session.options.package + " is not running: 'kordanixctl android " + session.options.package +
                " start' starts it";
    }
    return error;
}

/// The layer acts when the number before the word changes.
std::string request(const Session& session, const std::string& word, std::string& number) {
    number = freshNumber();
    return session.phone.setProperty(platform::COMMAND_PROPERTY, number + ' ' + word);
}

/// The library looks at keys only in developer mode.
std::string turnOnDeveloperMode(const Session& session) {
    const std::string name = std::string(PREFIX) + "devmode";
    std::string mode;
    std::string error = session.phone.run({"getprop", name}, mode);
    return error.empty() && mode != "true" ? session.phone.setProperties({{name, "true"}}) : error;
}

std::string describeSilence(const Session& session) {
    return session.options.package +
           " does not answer: it shows no overlay, or has presented no frame since; 'kordanixctl android " +
           session.options.package + " doctor' looks closer";
}

/// What the application last wrote about its dumps; empty when nothing.
std::string readNotice(const Session& session, const std::string& process) {
    const Answer answer = session.phone.runAs({"cat", ownFile("dump." + process)});
    return answer.status == 0 ? answer.out : std::string();
}

/// Prints what has become of a dump. Returns why it failed, if it did.
std::string tell(const Session& session, const platform::DumpNotice& notice) {
    const std::string folder = notice.folder.substr(notice.folder.find_last_of('/') + 1);
    if (notice.state == State::FAILED) {
        return "the dump of " + session.options.package + " failed: " + notice.error;
    }
    session.out << session.options.package;
    if (notice.state == State::RUNNING) {
        session.out << " dumps into " << folder << "; 'dump' once more ends it\n";
    } else {
        session.out << " has ended its dump: " << notice.frames << (notice.frames == 1 ? " frame" : " frames")
                    << " in " << folder << "; 'report' fetches it\n";
    }
    return {};
}

std::string writePicture(const Session& session, const std::string& file) {
    const std::string path =
        session.options.words.empty() ? session.options.package + ".png" : session.options.words.front();
    const Answer bytes =
        session.phone.adb().run({"exec-out", "run-as " + session.options.package + " cat " + file});
    session.phone.runAs({"rm", "-f", file});
    if (session.phone.adb().isShowing()) {
        session.phone.adb().explain("the picture is a PAM file; without --print it becomes " + path);
        return {};
    }
    std::string error =
        bytes.status == 0 ? savePhonePicture(bytes.out, path) : session.phone.describe(bytes, {"cat", file});
    if (error.empty()) {
        session.out << "The picture is " << path << '\n';
    }
    return error;
}

/// Waits until the application has filled the file. Returns why it has not.
std::string awaitPicture(const Session& session, const std::string& file) {
    const auto end = endOfWait(session);
    bool isBegun = false;
    for (;;) {
        const Answer size = session.phone.runAs({"stat", "-c", "%s", file});
        if (session.phone.adb().isShowing() || (size.status == 0 && size.out.substr(0, 1) != "0")) {
            return {};
        }
        if (size.status != 0 && !isFileMissing(size)) {
            return session.phone.describe(size, {"stat", file});
        }
        if (size.status != 0 && isBegun) {
            return session.options.package +
                   " could not write its picture; 'adb logcat -s Kordanix Ostra' may "
                   "say why";
        }
        isBegun = size.status == 0;
        if (Clock::now() >= end) {
            session.phone.runAs({"rm", "-f", file});
            return describeSilence(session);
        }
        usleep(POLL_PERIOD_US);
    }
}

}  // namespace

std::string dump(const Session& session) {
    std::string process;
    std::string number;
    std::string error = findListener(session, process);
    error = error.empty() ? turnOnDeveloperMode(session) : error;
    if (!error.empty()) {
        return error;
    }
    const bool isShowing = session.phone.adb().isShowing();
    const std::string before = isShowing ? std::string() : readNotice(session, process);
    error = request(session, "dump", number);
    const auto end = endOfWait(session);
    while (error.empty() && !isShowing) {
        const std::string text = readNotice(session, process);
        const auto notice = platform::parseDumpNotice(text);
        if (notice && text != before) {
            return tell(session, *notice);
        }
        if (Clock::now() >= end) {
            return describeSilence(session);
        }
        usleep(POLL_PERIOD_US);
    }
    return error;
}

std::string capture(const Session& session) {
    std::string process;
    std::string number;
    std::string error = findListener(session, process);
    error = error.empty() ? turnOnDeveloperMode(session) : error;
    error = error.empty() ? request(session, "capture", number) : error;
    if (error.empty()) {
        session.out << "Asked " << session.options.package << " to capture a frame\n";
    }
    return error;
}

std::string picture(const Session& session) {
    std::string process;
    std::string number;
    std::string error = findListener(session, process);
    error = error.empty() ? request(session, "picture", number) : error;
    const std::string file = ownFile(platform::pictureName(number));
    error = error.empty() ? awaitPicture(session, file) : error;
    return error.empty() ? writePicture(session, file) : error;
}

}  // namespace control::android
