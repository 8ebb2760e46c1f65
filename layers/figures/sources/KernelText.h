#pragma once

#include "figures/sources/FileTree.h"
#include "figures/sources/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sources {

/// Small pieces of the kernel's texts, the same in every locale.

std::string_view trimmed(std::string_view text);

/// Takes a whole unsigned decimal number off the front, after blanks; nothing when there is none that fits
/// into 64 bits.
std::optional<std::uint64_t> takeNumber(std::string_view& text);

/// The signed whole number that the text begins with, after blanks.
std::optional<std::int64_t> leadingInteger(std::string_view text);

/// Takes the next line off the front, without its end; nothing when the text is used up.
std::optional<std::string_view> takeLine(std::string_view& text);

/// The number of the line "NAME: NUMBER kB", in bytes; the first such line counts.
std::optional<double> kilobytes(std::string_view text, std::string_view name);

/// How many numbers a list of ranges such as "0-3,6-7" has.
std::uint64_t countRanges(std::string_view text);

/// The first line, trimmed, of a file; empty when it cannot be read.
std::string readWord(const FileTree& tree, const std::string& path);

/// The number a file begins with, times `scale`.
Value readScaled(const FileTree& tree, const std::string& path, double scale);

}  // namespace sources
