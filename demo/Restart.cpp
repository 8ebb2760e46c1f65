#include "Restart.h"

#include "Options.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace demo {

const char* const PROCESS_NAME = "kordanix-demo";

namespace {

constexpr const char* STARTED = "KORDANIX_DEMO_STARTED";
constexpr const char* DEVICE = "KORDANIX_DEVICE";
constexpr const char* RUNTIME_DIR = "KORDANIX_RUNTIME_DIR";

const char* variable(const char* name) {
    // Nothing in this process changes the environment.
    return std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
}

bool hasName(const char* entry, const char* name) {
    const std::size_t length = std::strlen(name);
    return std::strncmp(entry, name, length) == 0 && entry[length] == '=';
}

}  // namespace

bool restartIfNeeded(char** argv, const Options& options, int& exitCode) {
    if (variable(STARTED) != nullptr) {
        return true;
    }
    std::vector<std::string> texts = {std::string(STARTED) + "=1"};
    if (!options.device.empty()) {
        texts.push_back(std::string(DEVICE) + "=" + options.device);
    }
    std::string folder = (std::filesystem::temp_directory_path() / "kordanix-demo-XXXXXX").string();
    if (options.isPrivate) {
        if (mkdtemp(folder.data()) == nullptr) {
            std::fprintf(stderr, "Cannot make a folder for the settings, %s: %s\n", folder.c_str(),
                         std::generic_category().message(errno).c_str());
            exitCode = 1;
            return false;
        }
        texts.push_back(std::string(RUNTIME_DIR) + "=" + folder);
    }

    std::vector<char*> environment;
    environment.reserve(texts.size());
    for (std::string& text : texts) {
        environment.push_back(text.data());
    }
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const bool isReplaced = (hasName(*entry, DEVICE) && !options.device.empty()) ||
                                (hasName(*entry, RUNTIME_DIR) && options.isPrivate);
        if (!isReplaced) {
            environment.push_back(*entry);
        }
    }
    environment.push_back(nullptr);

    std::string name = PROCESS_NAME;
    argv[0] = name.data();
    execve("/proc/self/exe", argv, environment.data());
    std::fprintf(stderr, "Cannot start once more: %s\n", std::generic_category().message(errno).c_str());
    if (options.isPrivate) {
        rmdir(folder.c_str());
    }
    exitCode = 1;
    return false;
}

void removePrivateFolder(const Options& options) {
    const char* folder = variable(RUNTIME_DIR);
    // The name shows that we made the folder, not somebody else.
    if (options.isPrivate && folder != nullptr && std::strstr(folder, "/kordanix-demo-") != nullptr) {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }
}

}  // namespace demo
