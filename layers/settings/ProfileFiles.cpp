#include "settings/ProfileFiles.h"

#include "io/PlainFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace control {

namespace {

constexpr std::string_view ENDING = ".conf";
constexpr std::size_t SIZE_MAX_BYTES = std::size_t{1} << 16U;

std::string absolutePath(const char* variable) {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): the header says so
    return value == nullptr || value[0] != '/' ? std::string() : std::string(value);
}

std::string pathIn(const std::string& folder, const std::string& name) {
    return folder + '/' + name + std::string(ENDING);
}

}  // namespace

std::string profileFolder() {
    const std::string config = absolutePath("XDG_CONFIG_HOME");
    if (!config.empty()) {
        return config + "/kordanix";
    }
    const std::string home = absolutePath("HOME");
    return home.empty() ? home : home + "/.config/kordanix";
}

std::string profilePath(const std::string& name) {
    return name.find('/') == std::string::npos ? pathIn(profileFolder(), name) : name;
}

std::vector<std::string> profileNames() {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(profileFolder(), ignored)) {
        if (entry.path().extension() == ENDING) {
            names.push_back(entry.path().stem());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> firstErrors(const ProgramProfiles& profiles) {
    constexpr std::size_t MOST = 10;
    std::vector<std::string> errors = profiles.errors;
    if (errors.size() > MOST) {
        errors.resize(MOST);
        errors.push_back("and " + std::to_string(profiles.errors.size() - MOST) +
                         " more wrong lines; 'kordanixctl profile check' names them");
    }
    return errors;
}

std::string profileFileError(int error) {
    switch (error) {
        case EFBIG:
            return "is too large for a profile";
        case ELOOP:
            return "is a link that leads to itself";
        default:
            return platform::plainFileError(error);
    }
}

bool readProfile(const std::string& path, ProgramProfiles& all) {
    all.paths.push_back(path);
    std::string text;
    const int error = platform::readPlainFile(path, text, SIZE_MAX_BYTES, true);
    if (error == ENOENT || error == ENOTDIR) {
        return false;
    }
    if (error != 0) {
        all.errors.push_back(path + ": " + profileFileError(error));
        return true;
    }
    const Profile profile = parseProfile(text, all.assignments);
    for (const ProfileError& wrong : profile.errors) {
        all.errors.push_back(path + ':' + std::to_string(wrong.line) + ": " + wrong.text);
    }
    all.assignments.insert(all.assignments.end(), profile.assignments.begin(), profile.assignments.end());
    return true;
}

ProgramProfiles readProfiles(const std::vector<std::string>& names, const std::string& folder) {
    ProgramProfiles all;
    if (folder.empty()) {
        return all;
    }
    readProfile(pathIn(folder, DEFAULT_PROFILE), all);
    for (const std::string& name : names) {
        if (name != DEFAULT_PROFILE && readProfile(pathIn(folder, name), all)) {
            break;
        }
    }
    return all;
}

}  // namespace control
