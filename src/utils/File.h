#pragma once

#include <cstdio>

namespace utils {

/// A small text file, open for reading until the object is destroyed. The buffer is part of the object, so
/// the stream neither allocates one nor asks the kernel for the file's block size.
class File {
public:
    /// The object tests false when the file cannot be opened; errno says why.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the stream fills the buffer
    explicit File(const char* path) : mStream(std::fopen(path, "r")) {
        if (mStream != nullptr) {
            static_cast<void>(std::setvbuf(mStream, mBuffer, _IOFBF, sizeof mBuffer));
        }
    }
    ~File() {
        if (mStream != nullptr) {
            std::fclose(mStream);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    explicit operator bool() const { return mStream != nullptr; }
    std::FILE* get() const { return mStream; }

private:
    std::FILE* mStream;
    char mBuffer[512];
};

}  // namespace utils
