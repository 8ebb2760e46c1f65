#include "properties/RunSettings.h"

#include "settings/Presets.h"

#include <utility>

namespace control {

namespace {

void put(const std::vector<Assignment>& assignments, PropertyTexts& texts) {
    for (const Assignment& assignment : assignments) {
        texts[assignment.name] = assignment.text;
    }
}

}  // namespace

RunSettings::RunSettings(std::vector<Assignment> always, std::string preset, std::vector<Assignment> chosen)
    : mAlways(std::move(always)), mPreset(std::move(preset)), mChosen(std::move(chosen)) {}

PropertyTexts RunSettings::all() const {
    PropertyTexts texts;
    put(mAlways, texts);
    put(mProfiles.assignments, texts);
    if (!mPreset.empty()) {
        put(presetAssignments(mPreset, texts), texts);
    }
    put(mChosen, texts);
    return texts;
}

PropertyTexts RunSettings::withoutPreset() const {
    PropertyTexts texts;
    put(mAlways, texts);
    put(mProfiles.assignments, texts);
    put(mChosen, texts);
    return texts;
}

}  // namespace control
