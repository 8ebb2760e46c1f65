#pragma once

#include <cstdio>
#include <memory>

namespace utils {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// An open file that closes itself; null if it could not be opened (errno says why).
using File = std::unique_ptr<std::FILE, FileCloser>;

inline File openForReading(const char* path) {
    return File(std::fopen(path, "r"));
}

}  // namespace utils
