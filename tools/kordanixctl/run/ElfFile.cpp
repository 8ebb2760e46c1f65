#include "run/ElfFile.h"

#include "io/PlainFile.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstring>

namespace control {

namespace {

constexpr std::size_t PROGRAM_HEADERS_MAX = 65536;

template <typename Header, typename Part>
ElfFile readHeaders(const ReadFile& file) {
    Header header = {};
    const std::string bytes = file.read(0, sizeof(header));
    std::memcpy(&header, bytes.data(), bytes.size());
    ElfFile elf{header.e_ident[EI_CLASS], header.e_machine, {}};
    if (header.e_phentsize != sizeof(Part) || header.e_phnum > PROGRAM_HEADERS_MAX / sizeof(Part)) {
        return elf;
    }
    const std::string table = file.read(header.e_phoff, header.e_phnum * sizeof(Part));
    for (std::size_t i = 0; i + sizeof(Part) <= table.size(); i += sizeof(Part)) {
        Part part = {};
        std::memcpy(&part, table.data() + i, sizeof(part));
        if (part.p_type == PT_INTERP && part.p_filesz <= PATH_MAX) {
            const std::string text = file.read(part.p_offset, static_cast<std::size_t>(part.p_filesz));
            elf.loader = text.substr(0, text.find('\0'));
        }
    }
    return elf;
}

}  // namespace

ReadFile::ReadFile(const std::string& path) : mFile(platform::openPlainFile(path, O_RDONLY, 0, true)) {}

ReadFile::~ReadFile() {
    if (mFile >= 0) {
        close(mFile);
    }
}

std::string ReadFile::read(std::uint64_t offset, std::size_t size) const {
    std::string bytes(size, '\0');
    const ssize_t count = pread(mFile, bytes.data(), size, static_cast<off_t>(offset));
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

std::optional<ElfFile> readElf(const ReadFile& file) {
    const std::string identity = file.read(0, EI_NIDENT);
    if (identity.compare(0, SELFMAG, ELFMAG) != 0 || identity.size() < EI_NIDENT) {
        return std::nullopt;
    }
    return identity[EI_CLASS] == ELFCLASS32 ? readHeaders<Elf32_Ehdr, Elf32_Phdr>(file)
                                            : readHeaders<Elf64_Ehdr, Elf64_Phdr>(file);
}

}  // namespace control
