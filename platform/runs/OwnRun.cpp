#include "runs/OwnRun.h"

#include "io/WriteSignalsBlocked.h"
#include "properties/PropertyWriter.h"
#include "properties/RuntimeDirectory.h"
#include "runs/OverlayClaim.h"
#include "runs/RunFolder.h"

#include <android/log.h>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

namespace platform {

namespace {

namespace fs = std::filesystem;

/// Tells these runs from those of a launcher.
constexpr const char* OWN_MARKER = "/own";

/// Those of processes that have ended. What a launcher began may have processes that have no overlay yet, and
/// stays.
void removeEnded(const std::string& directory) {
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(directory, ignored)) {
        const std::string folder = entry.path();
        if (runProcess(folder) != 0 && fs::exists(folder + OWN_MARKER, ignored) && isRunOver(folder)) {
            removeEndedRun(folder);
        }
    }
}

/// Returns what went wrong, in plain words.
std::string fill(const std::string& folder, const PropertyTexts& properties) {
    std::string error = writePropertyTexts(folder + OWN_MARKER, {});
    error = error.empty() ? writePropertyTexts(folder + INITIAL_PROPERTIES, properties) : error;
    error = error.empty() ? openOverlayClaim(folder) : error;
    if (error.empty()) {
        PropertyWriter writer(folder);
        for (const auto& [name, text] : properties) {
            writer.set(name, text);
        }
        writer.set("debug.kordanix.settingsgeneration", "1");
        error = writer.commit();
    }
    return error;
}

}  // namespace

bool canBeginOwnRun() {
    std::string error;
    const std::string* const directory = ownRuntimeDirectory(error);
    return directory != nullptr && runProcess(*directory) == 0;
}

std::string beginOwnRun(const PropertyTexts& properties) {
    const WriteSignalsBlocked blocked;
    std::string error;
    try {
        const std::string* const directory = ownRuntimeDirectory(error);
        if (directory == nullptr || runProcess(*directory) != 0) {
            return {};
        }
        removeEnded(*directory);
        std::string folder = makeRunFolder(*directory, error);
        if (!folder.empty()) {
            error = fill(folder, properties);
            if (error.empty()) {
                useRuntimeDirectory(folder);
                return folder;
            }
            removeEndedRun(folder);
        }
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    __android_log_print(ANDROID_LOG_ERROR, "Ostra", "Properties of this program's own: %s", error.c_str());
    return {};
}

}  // namespace platform
