#pragma once

#include "settings/ProfileFiles.h"
#include "settings/RunProperties.h"

#include <string>
#include <vector>

namespace control {

/// What a run's properties begin with, and where that comes from. Of several that set one property the later
/// counts: what every run has, the default profile, the program's own profile, the preset, --set.
class RunSettings {
public:
    /// `preset` is a preset's name, or empty.
    RunSettings(std::vector<Assignment> always, std::string preset, std::vector<Assignment> chosen);

    /// Reads the profiles, as they are now, for a program with these names.
    void readProfilesOf(const std::vector<std::string>& names) { mProfiles = readProfiles(names); }
    const ProgramProfiles& profiles() const { return mProfiles; }

    PropertyTexts all() const;

    /// What the default preset returns to.
    PropertyTexts withoutPreset() const;

private:
    std::vector<Assignment> mAlways;
    ProgramProfiles mProfiles;
    std::string mPreset;
    std::vector<Assignment> mChosen;
};

}  // namespace control
