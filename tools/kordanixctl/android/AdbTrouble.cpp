#include "android/AdbTrouble.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace control {

namespace {

struct Trouble {
    std::string_view words;  ///< what adb or the device says
    std::string_view plain;  ///< PACKAGE stands for the application
};

// The first that fits counts. Of a pair, the second is how another release says it.
constexpr Trouble TROUBLES[] = {
    {"no devices/emulators found",
     "adb sees no device: connect one, switch on USB debugging in its developer options, and look at 'adb "
     "devices'"},
    {"more than one device",
     "adb sees several devices: choose one with --serial SERIAL; 'adb devices' lists them"},
    {"unauthorized",
     "the device has not allowed this computer to debug it: unlock its screen and accept the question there"},
    {"still authorizing",
     "the device is still asking whether this computer may debug it: accept on its screen"},
    {"device offline",
     "the device does not answer (offline): unplug it, plug it in again, and try once more"},
    {"insufficient permissions",
     "this computer's user may not use the device's USB port: install the package "
     "android-sdk-platform-tools-common, and plug the device in again"},
    {"no permissions",
     "this computer's user may not use the device's USB port: install the package "
     "android-sdk-platform-tools-common, and plug the device in again"},
    {"cannot connect to daemon", "adb's server does not start: try 'adb kill-server', then 'adb devices'"},
    {"failed to start daemon", "adb's server does not start: try 'adb kill-server', then 'adb devices'"},
    {"failed to check server version",
     "adb's server does not start: try 'adb kill-server', then 'adb devices'"},
    {"device disconnected", "the connection to the device broke: look at the cable, and try once more"},
    {"error: closed", "the connection to the device broke: look at the cable, and try once more"},
    {"protocol fault", "the connection to the device broke: look at the cable, and try once more"},
    {"not debuggable",
     "PACKAGE is not debuggable: install a debug build of it (android:debuggable=\"true\" in its manifest)"},
    {"unknown package", "PACKAGE is not installed on the device: 'adb shell pm list packages' lists what is"},
    {"is unknown", "PACKAGE is not installed on the device: 'adb shell pm list packages' lists what is"},
    {"couldn't stat",
     "the device does not open PACKAGE's own files: start it once as the device's main user, and try again"},
    {"not an application", "PACKAGE is a part of the system, whose files are not opened: use --apk FILE"},
    {"run-as: not found", "the device has no 'run-as', which opens an application's files: use --apk FILE"},
    {"run-as: inaccessible",
     "the device has no 'run-as', which opens an application's files: use --apk FILE"},
    {"INSTALL_FAILED_USER_RESTRICTED",
     "the device refuses to install over USB: allow it in the developer options ('Install via USB')"},
    {"INSTALL_FAILED_UPDATE_INCOMPATIBLE",
     "the device has the layer's APK with another key: 'kordanixctl android PACKAGE off' removes it"},
    {"INSTALL_FAILED_NO_MATCHING_ABIS",
     "the APK has no libraries for this device's processor: pack it with the right ABI"},
    {"INSTALL_PARSE_FAILED",
     "the file is not an APK that the device accepts: pack it with scripts/android-apk.sh"},
    {"INSUFFICIENT_STORAGE", "the device has no room left: make some, and try again"},
    {"No space left on device", "the device has no room left: make some, and try again"},
    {"WRITE_SECURE_SETTINGS",
     "the device refuses to change its settings over USB: some makers have a switch of its own for that in "
     "the "
     "developer options ('USB debugging (Security settings)')"},
    {"Failed to set property",
     "the device refuses to set the property: its maker keeps 'debug.' properties from the shell"},
    {"Bad component name",
     "PACKAGE has nothing to start in the launcher: start it by hand, the overlay is switched on"},
};

/// The first line that is not empty, without adb's own beginning.
std::string firstLine(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of("\r\n \t"), text.size()));
    return std::string(text.substr(0, text.find_first_of("\r\n")));
}

std::string filledIn(std::string_view plain, const std::string& package) {
    constexpr std::string_view BLANK = "PACKAGE";
    std::string text(plain);
    const std::size_t begin = text.find(BLANK);
    return begin == std::string::npos ? text : text.replace(begin, BLANK.size(), package);
}

}  // namespace

std::string describeTrouble(const Answer& answer, const std::string& package, const std::string& command) {
    const std::string said = answer.err + '\n' + answer.out;
    const auto has = [&](std::string_view words) { return said.find(words) != std::string::npos; };
    const auto* const known = std::find_if(std::begin(TROUBLES), std::end(TROUBLES),
                                           [&](const Trouble& row) { return has(row.words); });
    if (known != std::end(TROUBLES)) {
        return filledIn(known->plain, package);
    }
    if (has("device '") && has("not found")) {
        return "adb sees no device with that serial number: 'adb devices' lists those it sees";
    }
    const std::string words = firstLine(said);
    return "'" + command +
           "' failed: " + (words.empty() ? "it ended with status " + std::to_string(answer.status) : words);
}

bool isFileMissing(const Answer& answer) {
    return answer.err.find("No such file or directory") != std::string::npos &&
           answer.err.find("run-as:") == std::string::npos;
}

}  // namespace control
