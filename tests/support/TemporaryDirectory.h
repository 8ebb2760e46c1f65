#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace support {

/// What is in a file; empty when there is none.
inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A folder of mode 0700 that goes with everything in it when the object ends, but not in a forked child.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string name = std::filesystem::temp_directory_path() / "kordanix-test-XXXXXX";
        mPath = mkdtemp(name.data());
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        if (getpid() == mOwner) {
            std::filesystem::remove_all(mPath, ignored);
        }
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& path() const { return mPath; }
    std::string path(const std::string& name) const { return mPath + "/" + name; }

    /// Has a shell run this line in the folder. Returns whether all went well.
    bool shell(const std::string& line) const {
        return std::system(("cd '" + mPath + "' && { :; " + line + "\n}").c_str()) == 0;
    }

private:
    const pid_t mOwner = getpid();
    std::string mPath;
};

}  // namespace support
