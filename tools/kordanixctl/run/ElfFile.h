#pragma once

#include <elf.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace control {

/// A file to read from; a file that cannot be read is empty.
class ReadFile {
public:
    explicit ReadFile(const std::string& path);
    ~ReadFile();
    ReadFile(const ReadFile&) = delete;
    ReadFile& operator=(const ReadFile&) = delete;

    /// Reads up to `size` bytes.
    std::string read(std::uint64_t offset, std::size_t size) const;

private:
    int mFile;
};

/// What the headers of a program or library say.
struct ElfFile {
    unsigned char fileClass = ELFCLASSNONE;
    std::uint16_t machine = EM_NONE;
    std::string loader;  ///< the path of its dynamic loader; empty when it has none
};

/// Nothing when the file is no ELF file.
std::optional<ElfFile> readElf(const ReadFile& file);

}  // namespace control
