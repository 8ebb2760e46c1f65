#include "profiles/ProfileCommands.h"

#include "Diagnostic.h"
#include "io/EscapedText.h"
#include "io/PlainFile.h"
#include "profiles/Editor.h"
#include "profiles/ProfileText.h"
#include "properties/InitialProperties.h"
#include "properties/RuntimeDirectory.h"
#include "runs/OverlayClaim.h"
#include "settings/ProfileFiles.h"
#include "settings/ProgramNames.h"
#include "settings/Properties.h"
#include "settings/ValueText.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iomanip>
#include <system_error>
#include <vector>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t SIZE_MAX_BYTES = std::size_t{1} << 20U;
constexpr const char* NO_FOLDER = "neither XDG_CONFIG_HOME nor HOME tells where the profiles are";

/// Replaces the file, or what a link leads to, and makes its folder. Returns what went wrong.
std::string writeProfile(const std::string& path, const std::string& text) {
    std::error_code failure;
    const fs::path target = fs::exists(path, failure) ? fs::canonical(path, failure) : fs::path(path);
    if (!failure) {
        fs::create_directories(target.parent_path(), failure);
    }
    if (failure) {
        return "cannot write " + path + ": " + failure.message();
    }
    constexpr mode_t NEW_FILES = 0644;
    constexpr mode_t PERMISSIONS = 0777;
    struct stat old = {};
    const bool isThere = stat(target.c_str(), &old) == 0;
    const int error = platform::replaceFile(target, text, isThere ? old.st_mode & PERMISSIONS : NEW_FILES);
    return error == 0 ? std::string() : "cannot write " + path + ": " + profileFileError(error);
}

/// The name for the profile of the program that shows the overlay; empty when that is not known.
std::string nameOfProgram(const std::string& directory, std::optional<pid_t> process) {
    const std::optional<pid_t> claimant = platform::overlayClaimant(directory);
    process = claimant ? claimant : process;
    if (!process) {
        return {};
    }
    const std::vector<std::string> names = processNames("/proc/" + std::to_string(*process));
    const auto existing = std::find_if(names.begin(), names.end(), [](const std::string& name) {
        std::error_code ignored;
        return fs::exists(profilePath(name), ignored);
    });
    return existing != names.end() ? *existing : names.empty() ? std::string() : names.front();
}

std::optional<std::string> textOf(const PropertyTexts& texts, const std::string& name) {
    const auto found = texts.find(name);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
}

/// Whether the property is about the run and not about what the overlay shows: 'run' asks X for the screen's
/// rate, and its options may leave keys out. The next run does that anew.
bool isOfRun(const Property& property) {
    return property.shortName == "screen_rate" || property.type == PropertyType::KEY ||
           fullName(property) == KEYS_NAME;
}

/// What a run began with and its profiles do not say.
struct Beginning {
    PropertyTexts texts;
    PropertyTexts ofProfiles;
};

/// What the program shows where it differs from the texts in `defaults`, by short name, as people write it.
std::map<std::string_view, std::string> shownBeside(const PropertyTexts& defaults, const Beginning& run) {
    std::map<std::string_view, std::string> values;
    for (const Property& property : properties()) {
        const std::string name = fullName(property);
        const std::string usual = toDisplayText(property, textOf(defaults, name));
        const auto text = readProperty(name);
        const bool isLeft = isOfRun(property) && text == textOf(run.texts, name);
        std::string now = toDisplayText(property, isLeft ? textOf(run.ofProfiles, name) : text);
        if (isSaved(property) && now != usual && toPropertyText(property.type, now)) {
            values[property.shortName] = std::move(now);
        }
    }
    return values;
}

void keep(const std::vector<Assignment>& assignments, PropertyTexts& texts) {
    for (const Assignment& assignment : assignments) {
        texts[assignment.name] = assignment.text;
    }
}

/// Reads one profile as it counts, over the default one. Returns whether there is such a file.
bool readOver(const std::string& name, ProgramProfiles& profile) {
    ProgramProfiles under;
    if (profilePath(name) != profilePath(DEFAULT_PROFILE) && !profileFolder().empty()) {
        readProfile(profilePath(DEFAULT_PROFILE), under);
    }
    profile.assignments = under.assignments;
    const bool isThere = readProfile(profilePath(name), profile);
    profile.assignments.erase(
        profile.assignments.begin(),
        profile.assignments.begin() + static_cast<std::ptrdiff_t>(under.assignments.size()));
    return isThere;
}

/// Says on `err` what is wrong with the profile.
ExitCode complain(const ProgramProfiles& profile, std::ostream& err) {
    for (const std::string& error : profile.errors) {
        printDiagnostic(error, err);
    }
    return profile.errors.empty() ? SUCCESS : FAILURE;
}

std::string describe(const ProgramProfiles& profile) {
    const auto count = [](std::size_t number, const char* what) {
        return std::to_string(number) + ' ' + what + (number == 1 ? "" : "s");
    };
    return count(profile.assignments.size(), "setting") +
           (profile.errors.empty() ? "" : ", " + count(profile.errors.size(), "wrong line"));
}

}  // namespace

ExitCode saveProfile(const std::string& name, std::optional<pid_t> process, std::ostream& out,
                     std::ostream& err) {
    if (profileFolder().empty()) {
        return fail(NO_FOLDER, err);
    }
    const std::string directory = platform::openRuntimeDirectory().path;
    const std::string chosen = name.empty() ? nameOfProgram(directory, process) : name;
    if (chosen.empty()) {
        return fail("no program shows an overlay whose name the profile could have; 'save NAME' gives it one",
                    err, USAGE_ERROR);
    }
    const std::string path = profilePath(chosen);
    ProgramProfiles old;
    readProfile(path, old);
    ProgramProfiles forAll;
    if (path != profilePath(DEFAULT_PROFILE)) {
        readProfile(profilePath(DEFAULT_PROFILE), forAll);
    }
    PropertyTexts defaults;
    keep(forAll.assignments, defaults);
    const std::optional<PropertyTexts> initial = readInitialProperties(directory);
    Beginning run = {initial.value_or(PropertyTexts()), defaults};
    keep(old.assignments, run.ofProfiles);
    std::string text;
    const int unread = platform::readPlainFile(path, text, SIZE_MAX_BYTES, true);
    if (unread != 0 && unread != ENOENT) {
        return fail(path + ": " + profileFileError(unread), err);
    }
    if (!old.assignments.empty() && !initial && nameOfProgram(directory, process).empty()) {
        return fail("no program shows an overlay, so " + path + " stays as it is", err);
    }
    if (text.empty()) {
        text = "# Saved by 'kordanixctl save'; lines as 'kordanixctl set' takes them.\n";
    }
    const std::string error = writeProfile(path, updateProfile(text, shownBeside(defaults, run)));
    if (error.empty()) {
        out << path << '\n';
    }
    return failUnlessEmpty(error, err);
}

ExitCode listProfiles(std::ostream& out, std::ostream& err) {
    if (profileFolder().empty()) {
        return fail(NO_FOLDER, err);
    }
    const std::vector<std::string> names = profileNames();
    std::size_t width = 0;
    for (const std::string& name : names) {
        width = std::max(width, platform::escapeText(name).size());
    }
    for (const std::string& name : names) {
        ProgramProfiles profile;
        readOver(name, profile);
        out << std::left << std::setw(static_cast<int>(width) + 2) << platform::escapeText(name)
            << describe(profile) << '\n';
    }
    out << (names.empty() ? "There are no profiles in " : "\nThe profiles are files in ") << profileFolder()
        << (names.empty() ? "; 'kordanixctl save' makes one" : "") << ".\n";
    return SUCCESS;
}

ExitCode checkProfiles(const std::string& name, std::ostream& out, std::ostream& err) {
    if (profileFolder().empty() && name.find('/') == std::string::npos) {
        return fail(NO_FOLDER, err);
    }
    ExitCode result = SUCCESS;
    for (const std::string& each : name.empty() ? profileNames() : std::vector<std::string>{name}) {
        ProgramProfiles profile;
        if (!readOver(each, profile)) {
            return fail("there is no profile " + profilePath(each), err);
        }
        result = complain(profile, err) == SUCCESS ? result : FAILURE;
        out << platform::escapeText(each) << ": " << describe(profile) << '\n';
    }
    return result;
}

ExitCode editProfile(const std::string& name, std::ostream& out, std::ostream& err) {
    if (profileFolder().empty() && name.find('/') == std::string::npos) {
        return fail(NO_FOLDER, err);
    }
    const std::string chosen = name.empty() ? DEFAULT_PROFILE : name;
    const std::string path = profilePath(chosen);
    std::error_code ignored;
    const bool isNew = !fs::exists(path, ignored);
    const std::string offered = profileTemplate(chosen);
    const std::string error = isNew ? writeProfile(path, offered) : std::string();
    if (!error.empty()) {
        return fail(error, err);
    }
    const std::string editorError = runEditor(path);
    std::string text;
    if (isNew && platform::readPlainFile(path, text, SIZE_MAX_BYTES, true) == 0 && text == offered) {
        fs::remove(path, ignored);
        return editorError.empty() ? SUCCESS : fail(editorError, err);
    }
    return editorError.empty() ? checkProfiles(chosen, out, err) : fail(editorError, err);
}

}  // namespace control
