#pragma once

#include "settings/ProfileFiles.h"
#include "settings/RunProperties.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace vulkan {

/// The user's profiles for the program that this process runs. The log names what is wrong in them. One
/// thread at a time.
class ProgramProfiles {
public:
    /// Reads them; not while another thread changes the environment.
    ProgramProfiles();

    /// What a run begins with.
    const control::PropertyTexts& texts() const { return mTexts; }

    /// Whether the files are others than those that were read. Costs a system call for each.
    bool haveChanged() const { return statesOf(mRead.paths) != mStates; }

    /// Reads them anew, and changes the properties of the run in `folder`, which began with texts().
    void update(const std::string& folder);

private:
    /// What differs when a file has changed; nothing of one that is not there.
    using FileState = std::array<std::int64_t, 5>;

    static std::vector<FileState> statesOf(const std::vector<std::string>& paths);
    control::PropertyTexts read();

    std::string mFolder;
    std::vector<std::string> mNames;
    control::ProgramProfiles mRead;
    std::vector<FileState> mStates;  ///< of the files, just before they were read
    control::PropertyTexts mTexts;
};

}  // namespace vulkan
