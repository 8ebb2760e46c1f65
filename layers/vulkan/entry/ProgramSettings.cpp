#include "vulkan/entry/ProgramSettings.h"

#include <sys/stat.h>

#include <array>
#include <chrono>
#include <exception>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "io/WriteSignalsBlocked.h"
#include "runs/OwnRun.h"
#include "runs/RunFolder.h"
#include "settings/ProfileFiles.h"
#include "settings/ProgramNames.h"
#include "settings/RunProperties.h"
#include "utils/Log.h"
#include "utils/Thread.h"

namespace vulkan {

namespace {

/// The program has our descriptors in its hands, so no watch of the kernel's: a look costs it some calls.
constexpr std::chrono::seconds BETWEEN_LOOKS(1);

using FileState = std::array<std::int64_t, 5>;

/// What differs when a file has changed; nothing of one that is not there.
std::vector<FileState> statesOf(const std::vector<std::string>& paths) {
    std::vector<FileState> states;
    for (const std::string& path : paths) {
        struct stat file = {};
        const bool isThere = stat(path.c_str(), &file) == 0;
        states.push_back(isThere ? FileState{static_cast<std::int64_t>(file.st_ino), file.st_size,
                                             file.st_mtim.tv_sec, file.st_mtim.tv_nsec, file.st_ctim.tv_nsec}
                                 : FileState{});
    }
    return states;
}

/// The profiles of this process's program.
class Profiles {
public:
    Profiles() : mFolder(control::profileFolder()), mNames(control::processNames("/proc/self")) { read(); }

    /// What a run begins with.
    const control::PropertyTexts& texts() const { return mTexts; }

    bool haveChanged() const { return statesOf(mRead.paths) != mStates; }

    /// Reads them anew for the run in `folder`.
    void update(const std::string& folder) {
        const control::PropertyTexts before = mTexts;
        read();
        if (mTexts == before) {
            return;
        }
        const platform::WriteSignalsBlocked blocked;
        std::string error = control::changeBeginning(folder, before, mTexts);
        if (error.empty()) {
            error = platform::writePropertyTexts(folder + platform::INITIAL_PROPERTIES, mTexts);
        }
        if (!error.empty()) {
            KORDANIX_LOG_ERROR("the changed profile has no effect: %s", KORDANIX_LOG_HERE, error.c_str());
        }
    }

private:
    void read() {
        const std::vector<std::string> known = mRead.errors;
        do {
            mStates = statesOf(mRead.paths);
            mRead = control::readProfiles(mNames, mFolder);
        } while (mStates.size() != mRead.paths.size());
        if (mRead.errors != known) {
            for (const std::string& error : control::firstErrors(mRead)) {
                KORDANIX_LOG_ERROR("%s", KORDANIX_LOG_HERE, error.c_str());
            }
        }
        mTexts = {{"debug.kordanix.status", "true"}};
        for (const control::Assignment& assignment : mRead.assignments) {
            mTexts[assignment.name] = assignment.text;
        }
    }

    std::string mFolder;
    std::vector<std::string> mNames;
    control::ProgramProfiles mRead;
    std::vector<FileState> mStates;  ///< of the files, just before they were read
    control::PropertyTexts mTexts;
};

[[noreturn]] void follow(Profiles profiles, const std::string& folder) {
    while (true) {
        std::this_thread::sleep_for(BETWEEN_LOOKS);
        try {
            if (profiles.haveChanged()) {
                profiles.update(folder);
            }
        } catch (const std::exception&) {
            // No memory now; the next look is another chance.
        }
    }
}

}  // namespace

void beginProgramsRun() {
    try {
        if (!platform::canBeginOwnRun()) {
            return;
        }
        const Profiles profiles;
        const std::string folder = platform::beginOwnRun(profiles.texts());
        if (!folder.empty()) {
            utils::startThread("kordanix-conf", [profiles, folder] { follow(profiles, folder); }).detach();
        }
    } catch (const std::exception& error) {
        KORDANIX_LOG_ERROR("a changed profile will have no effect: %s", KORDANIX_LOG_HERE, error.what());
    }
}

}  // namespace vulkan
