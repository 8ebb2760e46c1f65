// Profiles with any bytes, read and written again.

#include "Check.h"
#include "profiles/ProfileText.h"
#include "settings/Profile.h"
#include "settings/ValueText.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace {

using control::Profile;
using Values = std::map<std::string_view, std::string>;

/// What the profile sets of what is saved, as people write it.
Values valuesOf(const Profile& profile) {
    Values values;
    for (const control::Assignment& assignment : profile.assignments) {
        const control::Property* const property = control::findProperty(assignment.name);
        FUZZ_CHECK(property != nullptr && control::isReadable(*property, assignment.text));
        if (control::isSaved(*property)) {
            values[property->shortName] = control::toDisplayText(*property, assignment.text);
        }
    }
    return values;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::size_t lines = control::splitLines(text).size();
    const Profile profile = control::parseProfile(text);
    FUZZ_CHECK(profile.assignments.size() + profile.errors.size() <= lines);
    int last = 0;
    for (const control::ProfileError& error : profile.errors) {
        FUZZ_CHECK(error.line > last && static_cast<std::size_t>(error.line) <= lines && !error.text.empty());
        FUZZ_CHECK(error.text.find_first_of("\n\x1B") == std::string::npos);
        last = error.line;
    }
    // What is saved is what is read then; wrong lines stay, but for those that share a key.
    const Values values = valuesOf(profile);
    const Profile saved = control::parseProfile(control::updateProfile(text, values));
    FUZZ_CHECK(valuesOf(saved) == values);
    FUZZ_CHECK(saved.errors.size() <= profile.errors.size());
    FUZZ_CHECK(valuesOf(control::parseProfile(control::updateProfile(text, {}))).empty());
    return 0;
}
