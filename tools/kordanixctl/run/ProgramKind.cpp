#include "run/ElfFile.h"
#include "run/ProgramFile.h"
#include "run/Programs32.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

namespace control {

namespace {

namespace fs = std::filesystem;

constexpr const char* SHELL = "/bin/sh";
/// The kernel's limit.
constexpr std::size_t SCRIPT_LINE_MAX = 256;
constexpr int INTERPRETERS_MAX = 5;

/// Whether the kernel gives the program rights that this process does not have; then the program's dynamic
/// loader preloads nothing.
bool givesRights(const std::string& path) {
    struct stat status = {};
    struct statvfs system = {};
    if (stat(path.c_str(), &status) != 0 || statvfs(path.c_str(), &system) != 0 ||
        (system.f_flag & ST_NOSUID) != 0) {
        return false;
    }
    const bool changesUser = (status.st_mode & S_ISUID) != 0 && status.st_uid != geteuid();
    const bool changesGroup =
        (status.st_mode & S_ISGID) != 0 && (status.st_mode & S_IXGRP) != 0 && status.st_gid != getegid();
    return changesUser || changesGroup ||
           (getuid() != 0 && getxattr(path.c_str(), "security.capability", nullptr, 0) > 0);
}

/// Returns what the kernel, or execvp(), starts in place of a file that is not an ELF program.
std::string interpreterOf(const ReadFile& file) {
    const std::string line = file.read(0, SCRIPT_LINE_MAX);
    if (line.compare(0, 2, "#!") != 0) {
        return SHELL;
    }
    const std::size_t begin = line.find_first_not_of(" \t", 2);
    const std::size_t end = line.find_first_of(" \t\n", begin);
    return begin == std::string::npos ? SHELL : line.substr(begin, end - begin);
}

}  // namespace

ProgramKind inspectProgram(const std::string& path) {
    const std::optional<ElfFile> own = readElf(ReadFile("/proc/self/exe"));
    std::string program = path;
    std::optional<ElfFile> elf;
    for (int i = 0; i < INTERPRETERS_MAX && !elf; ++i) {
        const ReadFile file(program);
        elf = readElf(file);
        program = elf ? program : interpreterOf(file);
    }
    if (!own || !elf) {
        return {};
    }
    ElfFile ours = *own;  // what our shim can be loaded into
    if (elf->fileClass != own->fileClass) {
        const Programs32 others = ownPrograms32();
        if (others.folder.empty()) {
            return {program +
                        (elf->fileClass == ELFCLASS32 ? " is a 32-bit program" : " is a 64-bit program") +
                        (others.obstacle.empty() ? "" : ", and " + others.obstacle),
                    true};
        }
        ours = {ELFCLASS32, EM_386, others.loader};
    }
    if (elf->machine != ours.machine) {
        return {program + " is a program for another kind of processor", true};
    }
    if (elf->loader.empty()) {
        return {program + " is statically linked", false};
    }
    const std::string loader = fs::path(elf->loader).filename();
    if (loader != fs::path(ours.loader).filename()) {
        return {program + " uses another C library (its loader is " + loader + ")", true};
    }
    if (givesRights(program)) {
        return {program + " runs with rights that you have not (set-user-ID, set-group-ID or capabilities)",
                false};
    }
    return {};
}

}  // namespace control
