#include "run/WaysIn.h"

#include "run/Programs32.h"

#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr WayIn WAYS_IN[] = {
    {"OpenGL, OpenGL ES", "LD_PRELOAD", "kordanix/libkordanix-preload.so", ':', true, true, false, "", ""},
    // Vulkan's loader looks for implicit layers in the folders of this variable before the user's own ones.
    {"Vulkan", "XDG_CONFIG_DIRS", "kordanix", ':', false, false, true, "/etc/xdg", "KORDANIX"},
};

/// Whether the dynamic loader would replace a part of the path.
bool hasToken(const std::string& path) {
    for (std::size_t sign = path.find('$'); sign != std::string::npos; sign = path.find('$', sign + 1)) {
        const std::string_view rest =
            std::string_view(path).substr(sign + (path.compare(sign + 1, 1, "{") == 0 ? 2 : 1));
        for (const std::string_view token : {"LIB", "ORIGIN", "PLATFORM"}) {
            if (rest.substr(0, token.size()) == token) {
                return true;
            }
        }
    }
    return false;
}

std::string pathError(const WayIn& way, const std::string& path) {
    if (path.find(way.separator) != std::string::npos ||
        (way.isSplitAtBlanks && path.find(' ') != std::string::npos)) {
        return path + ": a blank or colon in the path keeps it from being loaded; move the installation";
    }
    return way.isExpanded && hasToken(path)
               ? path +
                     ": $LIB, $ORIGIN or $PLATFORM in the path means something else to the dynamic loader; "
                     "move the installation"
               : std::string();
}

/// Returns the path of the file that was built or installed with this program; when it is missing, an empty
/// text with the reason in `error`.
std::string findFile(const std::string& name, std::string& error) {
    std::error_code failure;
    const fs::path program = fs::read_symlink("/proc/self/exe", failure);
    if (failure) {
        error = "cannot read /proc/self/exe, next to which the overlay's files are: " + failure.message() +
                "; is /proc mounted?";
        return {};
    }
    for (const char* const folder : {KORDANIX_LIB_FROM_BIN, "../lib"}) {
        const fs::path path = (program.parent_path() / folder / name).lexically_normal();
        if (fs::exists(path, failure)) {
            return path;
        }
    }
    error = name + ", which brings the overlay into a program, is not installed with kordanixctl";
    return {};
}

}  // namespace

std::string openWaysIn() {
    const Programs32 programs32 = ownPrograms32();
    std::vector<std::pair<const char*, std::string>> variables;
    for (const WayIn& way : WAYS_IN) {
        std::string error;
        std::string path = findFile(way.file, error);
        if (path.empty() && way.isOptional) {
            continue;
        }
        error = error.empty() ? pathError(way, path) : error;
        if (!error.empty()) {
            return error;
        }
        if (!programs32.folder.empty() && way.isExpanded) {
            path = programs32.preloaded;
        } else if (!programs32.folder.empty()) {
            path.append(1, way.separator).append(programs32.folder);
        }
        const char* const set = std::getenv(way.variable);  // NOLINT(concurrency-mt-unsafe): one thread
        const std::string others = set == nullptr || set[0] == '\0' ? way.unset : set;
        if (!others.empty()) {
            path.append(1, way.separator).append(others);
        }
        variables.emplace_back(way.variable, path);
        if (way.enabling[0] != '\0') {
            variables.emplace_back(way.enabling, "1");
        }
    }
    for (const auto& [name, value] : variables) {
        setenv(name, value.c_str(), 1);  // NOLINT(concurrency-mt-unsafe): one thread
    }
    return {};
}

std::string knownGraphics() {
    std::string all;
    for (const WayIn& way : WAYS_IN) {
        all += (all.empty() ? "" : " or ") + std::string(way.graphics);
    }
    return all;
}

}  // namespace control
