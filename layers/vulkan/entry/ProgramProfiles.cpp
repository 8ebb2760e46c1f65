#include "vulkan/entry/ProgramProfiles.h"

#include "io/WriteSignalsBlocked.h"
#include "runs/RunFolder.h"
#include "settings/ProgramNames.h"
#include "utils/Log.h"

#include <sys/stat.h>

namespace vulkan {

ProgramProfiles::ProgramProfiles()
    : mFolder(control::profileFolder()), mNames(control::processNames("/proc/self")), mTexts(read()) {}

void ProgramProfiles::update(const std::string& folder) {
    control::PropertyTexts now = read();
    if (now == mTexts) {
        return;
    }
    const platform::WriteSignalsBlocked blocked;
    std::string error = control::changeBeginning(folder, mTexts, now);
    if (error.empty()) {
        error = platform::writePropertyTexts(folder + platform::INITIAL_PROPERTIES, now);
    }
    if (error.empty()) {
        mTexts = std::move(now);
    } else {
        KORDANIX_LOG_ERROR("the changed profile has no effect: %s", KORDANIX_LOG_HERE, error.c_str());
    }
}

std::vector<ProgramProfiles::FileState> ProgramProfiles::statesOf(const std::vector<std::string>& paths) {
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

control::PropertyTexts ProgramProfiles::read() {
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
    control::PropertyTexts texts = {{"debug.kordanix.status", "true"}};
    for (const control::Assignment& assignment : mRead.assignments) {
        texts[assignment.name] = assignment.text;
    }
    return texts;
}

}  // namespace vulkan
