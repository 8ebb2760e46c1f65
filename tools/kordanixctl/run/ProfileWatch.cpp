#include "run/ProfileWatch.h"

#include "Diagnostic.h"
#include "io/WriteSignalsBlocked.h"
#include "properties/InitialProperties.h"
#include "runs/OverlayClaim.h"
#include "settings/ProgramNames.h"
#include "settings/RunProperties.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <system_error>
#include <utility>

namespace control {

namespace {

constexpr std::uint32_t COMES = IN_CREATE | IN_MOVED_TO;
constexpr std::uint32_t CHANGES = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
constexpr std::uint32_t GOES = IN_DELETE_SELF | IN_MOVE_SELF;

}  // namespace

ProfileWatch::ProfileWatch(std::string folder, RunSettings settings, std::vector<std::string> names,
                           std::ostream& err)
    : mFolder(std::move(folder)),
      mSettings(std::move(settings)),
      mNames(std::move(names)),
      mErr(err),
      mTexts(mSettings.all()),
      mDescriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (mDescriptor >= 0) {
        mRunWatch = inotify_add_watch(mDescriptor, mFolder.c_str(), IN_MOVED_TO | IN_ONLYDIR);
        watch();
    }
}

ProfileWatch::~ProfileWatch() {
    if (mDescriptor >= 0) {
        close(mDescriptor);
    }
}

void ProfileWatch::attend() {
    try {
        const bool areProfilesTouched = takeEvents();
        if (followProgram() || areProfilesTouched) {
            watch();
            update();
        }
    } catch (const std::exception&) {
        // No memory now; the next event is another chance.
    }
}

/// Returns whether the profiles may have changed.
bool ProfileWatch::takeEvents() {
    alignas(inotify_event) char events[4096];
    bool areProfilesTouched = false;
    ssize_t size = 0;
    while ((size = read(mDescriptor, events, sizeof(events))) > 0) {
        for (ssize_t i = 0; i < size;) {
            inotify_event event = {};
            std::memcpy(&event, events + i, sizeof(event));
            areProfilesTouched = areProfilesTouched || event.wd != mRunWatch;
            i += static_cast<ssize_t>(sizeof(event) + event.len);
        }
    }
    if (size == 0 || errno != EAGAIN) {
        close(std::exchange(mDescriptor, -1));
    }
    return areProfilesTouched;
}

/// Watches the profiles' folder, or the nearest one above it while there is none; and what a link leads to.
void ProfileWatch::watch() {
    int found = -1;
    std::string missing;  // the highest folder that was not there
    std::error_code ignored;
    do {
        std::string folder = profileFolder();
        missing.clear();
        while (!folder.empty()) {
            const std::uint32_t what = missing.empty() ? CHANGES : COMES;
            found = inotify_add_watch(mDescriptor, folder.c_str(), what | GOES | IN_ONLYDIR);
            if (found >= 0 || (errno != ENOENT && errno != ENOTDIR)) {
                break;
            }
            missing = folder;
            folder.resize(folder.rfind('/'));
        }
        // One that has come before the watch above it was there is never told.
    } while (found >= 0 && std::filesystem::is_directory(missing, ignored));
    if (mProfilesWatch >= 0 && mProfilesWatch != found) {
        inotify_rm_watch(mDescriptor, mProfilesWatch);
    }
    mProfilesWatch = found;
    for (const std::string& path : mSettings.profiles().paths) {
        inotify_add_watch(mDescriptor, path.c_str(), IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF);
    }
}

/// Returns whether another program counts from now on.
bool ProfileWatch::followProgram() {
    const auto claimant = platform::overlayClaimant(mFolder);
    std::vector<std::string> names;
    if (claimant) {
        names = processNames("/proc/" + std::to_string(*claimant));
    }
    if (names.empty() || names == mNames) {
        return false;
    }
    mNames = std::move(names);
    return true;
}

void ProfileWatch::update() {
    const std::vector<std::string> known = mSettings.profiles().errors;
    mSettings.readProfilesOf(mNames);
    const platform::WriteSignalsBlocked blocked;
    if (mSettings.profiles().errors != known) {
        for (const std::string& error : firstErrors(mSettings.profiles())) {
            printDiagnostic(error, mErr);
        }
    }
    PropertyTexts texts = mSettings.all();
    if (texts == mTexts) {
        return;
    }
    std::string error = changeBeginning(mFolder, mTexts, texts);
    error = error.empty() ? writeInitialProperties(mFolder, mSettings) : error;
    if (error.empty()) {
        mTexts = std::move(texts);
    } else {
        printDiagnostic("the changed profile has no effect: " + error, mErr);
    }
}

}  // namespace control
