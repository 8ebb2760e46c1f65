#include "runs/OwnRun.h"

#include <android/log.h>
#include <unistd.h>

#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include "io/EscapedText.h"
#include "io/PlainFile.h"
#include "io/WriteSignalsBlocked.h"
#include "properties/PropertyWriter.h"
#include "properties/RuntimeDirectory.h"
#include "runs/OverlayClaim.h"
#include "runs/RunFolder.h"

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
std::string fill(const std::string& folder, const OwnProperties& properties) {
    std::string begin;
    for (const auto& [name, text] : properties) {
        begin += name + ' ' + escapeText(text) + '\n';
    }
    for (const auto& [name, text] : {std::pair{OWN_MARKER, std::string()}, {INITIAL_PROPERTIES, begin}}) {
        const int failure = replaceFile(folder + name, text);
        if (failure != 0) {
            return "cannot write " + folder + name + ": " + plainFileError(failure);
        }
    }
    std::string error = openOverlayClaim(folder);
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

void beginOwnRun(OwnProperties (*readProperties)()) {
    const WriteSignalsBlocked blocked;
    std::string error;
    try {
        const std::string* const directory = ownRuntimeDirectory(error);
        if (directory == nullptr || runProcess(*directory) != 0) {
            return;
        }
        removeEnded(*directory);
        OwnProperties all = {{"debug.kordanix.status", "true"}};
        if (readProperties != nullptr) {
            const OwnProperties more = readProperties();
            all.insert(all.end(), more.begin(), more.end());
        }
        const std::string folder = makeRunFolder(*directory, error);
        if (!folder.empty()) {
            error = fill(folder, all);
            if (error.empty()) {
                useRuntimeDirectory(folder);
                return;
            }
            removeEndedRun(folder);
        }
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    __android_log_print(ANDROID_LOG_ERROR, "Ostra", "Properties of this program's own: %s", error.c_str());
}

}  // namespace platform
