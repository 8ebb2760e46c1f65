#include "io/PlainFile.h"
#include "run/ProgramFile.h"

#include <elf.h>
#include <limits.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <optional>
#include <vector>

namespace control {

namespace {

constexpr const char* SHELL = "/bin/sh";
/// The kernel's limit.
constexpr std::size_t SCRIPT_LINE_MAX = 256;
constexpr int INTERPRETERS_MAX = 5;
constexpr std::size_t PROGRAM_HEADERS_MAX = 65536;

class File {
public:
    explicit File(const std::string& path) : mFile(platform::openPlainFile(path, O_RDONLY, 0, true)) {}
    ~File() {
        if (mFile >= 0) {
            close(mFile);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// Reads up to `size` bytes.
    std::string read(std::uint64_t offset, std::size_t size) const {
        std::string bytes(size, '\0');
        const ssize_t count = pread(mFile, bytes.data(), size, static_cast<off_t>(offset));
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

private:
    int mFile;
};

struct Elf {
    unsigned char fileClass = ELFCLASSNONE;
    ElfW(Half) machine = EM_NONE;
    std::string loader;  ///< the file name of its dynamic loader; empty when it has none
};

std::optional<Elf> readElf(const File& file) {
    ElfW(Ehdr) header = {};
    const std::string bytes = file.read(0, sizeof(header));
    if (bytes.compare(0, SELFMAG, ELFMAG) != 0 || bytes.size() < EI_NIDENT) {
        return std::nullopt;
    }
    std::memcpy(&header, bytes.data(), bytes.size());
    // e_machine is at the same offset in 32-bit and 64-bit headers.
    Elf elf{header.e_ident[EI_CLASS], header.e_machine, {}};
    if (header.e_phentsize != sizeof(ElfW(Phdr)) ||
        header.e_phnum > PROGRAM_HEADERS_MAX / sizeof(ElfW(Phdr))) {
        return elf;
    }
    const std::string table = file.read(header.e_phoff, header.e_phnum * sizeof(ElfW(Phdr)));
    for (std::size_t i = 0; i + sizeof(ElfW(Phdr)) <= table.size(); i += sizeof(ElfW(Phdr))) {
        ElfW(Phdr) part = {};
        std::memcpy(&part, table.data() + i, sizeof(part));
        if (part.p_type == PT_INTERP && part.p_filesz <= PATH_MAX) {
            elf.loader = std::filesystem::path(file.read(part.p_offset, part.p_filesz).c_str()).filename();
        }
    }
    return elf;
}

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
std::string interpreterOf(const File& file) {
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
    const std::optional<Elf> own = readElf(File("/proc/self/exe"));
    std::string program = path;
    std::optional<Elf> elf;
    for (int i = 0; i < INTERPRETERS_MAX && !elf; ++i) {
        const File file(program);
        elf = readElf(file);
        program = elf ? program : interpreterOf(file);
    }
    if (!own || !elf) {
        return {};
    }
    if (elf->fileClass != own->fileClass) {
        return {program + (elf->fileClass == ELFCLASS32 ? " is a 32-bit program" : " is a 64-bit program"),
                true};
    }
    if (elf->machine != own->machine) {
        return {program + " is a program for another kind of processor", true};
    }
    if (elf->loader.empty()) {
        return {program + " is statically linked", false};
    }
    if (elf->loader != own->loader) {
        return {program + " uses another C library (its loader is " + elf->loader + ")", true};
    }
    if (givesRights(program)) {
        return {program + " runs with rights that you have not (set-user-ID, set-group-ID or capabilities)",
                false};
    }
    return {};
}

}  // namespace control
