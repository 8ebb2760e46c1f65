#include "run/Programs32.h"

#include "processes/SideProcess.h"
#include "run/ElfFile.h"

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <system_error>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr const char* SHIM = "kordanix/libkordanix-preload.so";
/// A machine may be busy; the loaders answer at once.
constexpr std::chrono::seconds PATIENCE(2);

/// Returns what a dynamic loader puts in the place of $LIB; empty when it does not say, as before glibc 2.33.
std::string libFolder(const std::string& loader) {
    SideProcess asked([&](int output) {
        const char* const environment[] = {nullptr};
        dup2(output, STDOUT_FILENO);
        execle(loader.c_str(), loader.c_str(), "--list-diagnostics", nullptr, environment);
    });
    const std::string answer = asked.finish(PATIENCE);
    constexpr std::string_view KEY = "dl_dst_lib=\"";
    const std::size_t key = answer.find(KEY);
    if (key == std::string::npos) {
        return {};
    }
    const std::size_t begin = key + KEY.size();
    const std::size_t end = answer.find('"', begin);
    return end == std::string::npos ? std::string() : answer.substr(begin, end - begin);
}

/// Finds what programs with that loader would preload. Returns its folder, or nothing with the reason in
/// `error`.
std::string findModules(const std::string& prefix, const std::string& loader, unsigned char fileClass,
                        std::string& error) {
    const std::string lib = libFolder(loader);
    if (lib.empty()) {
        error = loader + " does not say which folder is $LIB";
        return {};
    }
    const fs::path shim = fs::path(prefix) / lib / SHIM;
    const std::optional<ElfFile> elf = readElf(ReadFile(shim));
    if (!elf || elf->fileClass != fileClass) {
        error = "there is no " + shim.string() +
                (fileClass == ELFCLASS32 ? " for them; docs/packaging.md says how it is built" : "");
        return {};
    }
    return shim.parent_path();
}

}  // namespace

Programs32 findPrograms32(const std::string& prefix) {
    const std::optional<ElfFile> own = readElf(ReadFile("/proc/self/exe"));
    if (!own || own->machine != EM_X86_64 || own->fileClass != ELFCLASS64) {
        return {};
    }
    Programs32 found;
    found.loader = "/lib/ld-linux.so.2";
    std::error_code ignored;
    if (!fs::exists(found.loader, ignored)) {
        found.obstacle = "this machine has no " + found.loader + " to run them";
        return found;
    }
    const std::string folder = findModules(prefix, found.loader, ELFCLASS32, found.obstacle);
    if (!folder.empty() && !findModules(prefix, own->loader, ELFCLASS64, found.obstacle).empty()) {
        found.folder = folder;
        found.preloaded = fs::path(prefix) / "$LIB" / SHIM;
    }
    return found;
}

Programs32 ownPrograms32() {
    std::error_code failure;
    const fs::path program = fs::read_symlink("/proc/self/exe", failure);
    return failure ? Programs32{}
                   : findPrograms32((program.parent_path() / KORDANIX_PREFIX_FROM_BIN).lexically_normal());
}

}  // namespace control
