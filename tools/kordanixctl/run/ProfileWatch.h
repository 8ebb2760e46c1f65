#pragma once

#include "processes/Attendant.h"
#include "properties/RunSettings.h"

#include <ostream>
#include <string>
#include <vector>

namespace control {

/// Keeps a run's properties as the profiles are: when a profile changes, and when it turns out that another
/// program than the one that was started shows the overlay, as with a script or launcher. What somebody has
/// changed in the run meanwhile stays; 'reset' returns to the profiles as they are then.
class ProfileWatch : public Attendant {
public:
    /// `folder` is the run's, whose properties and initial properties are those of `settings`, read for a
    /// program with these names. Wrong lines of a changed profile go to `err`, which outlives the object.
    ProfileWatch(std::string folder, RunSettings settings, std::vector<std::string> names, std::ostream& err);
    ~ProfileWatch() override;
    ProfileWatch(const ProfileWatch&) = delete;
    ProfileWatch& operator=(const ProfileWatch&) = delete;

    /// Without a descriptor left, or a watch of the kernel's, the run goes on with the profiles as they were.
    int descriptor() const override { return mDescriptor; }
    void attend() override;

private:
    bool takeEvents();
    void watch();
    bool followProgram();
    void update();

    std::string mFolder;
    RunSettings mSettings;
    std::vector<std::string> mNames;
    std::ostream& mErr;
    PropertyTexts mTexts;  ///< what the run began with, by the latest profiles
    int mDescriptor;
    int mRunWatch = -1;
    int mProfilesWatch = -1;
};

}  // namespace control
