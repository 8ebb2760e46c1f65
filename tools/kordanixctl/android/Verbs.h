#pragma once

#include "android/AndroidCommand.h"
#include "android/Phone.h"

/// The verbs of 'kordanixctl android'. Each returns an empty text, or what went wrong and what to do about
/// it.
namespace control::android {

inline constexpr const char* GLES_FILE = "libKordanixGles.so";
inline constexpr const char* VULKAN_FILE = "libVkLayer_Kordanix.so";
inline constexpr const char* VULKAN_NAME = "VK_LAYER_KORDANIX_overlay";
inline constexpr const char* LAYER_PACKAGE = "kordanix.layers";  ///< of the APK, see scripts/android-apk.sh

/// Where dumps and pictures are, in the application's data folder.
inline constexpr const char* FILES = "files";
inline constexpr const char* OWN_FOLDER = "kordanix";

/// What a verb works with. `out` is for people, and silent while commands are shown.
struct Session {
    const AndroidOptions& options;
    const Phone& phone;
    std::ostream& out;
    std::ostream& err;  ///< for notes; a failure is returned
};

std::string install(const Session& session);
std::string start(const Session& session);
std::string set(const Session& session);
std::string dump(const Session& session);
std::string capture(const Session& session);
std::string picture(const Session& session);
std::string pull(const Session& session);
std::string off(const Session& session);
std::string examine(const Session& session);  ///< doctor

/// Says itself what went wrong, because the conversion does.
ExitCode report(const Session& session);

/// Makes assignments of alternating names and values, as 'kordanixctl set' does.
std::string readAssignments(const std::vector<std::string>& words, std::vector<Assignment>& assignments);

/// The settings of the device that load layers into one application: their names.
inline constexpr const char* SETTINGS[] = {"enable_gpu_debug_layers", "gpu_debug_app",
                                           "gpu_debug_layers_gles", "gpu_debug_layers",
                                           "gpu_debug_layer_app"};

}  // namespace control::android
