#pragma once

#include <sys/types.h>

#include <fstream>
#include <ostream>
#include <string>

namespace control {

/// An output file that the user named. It is first written under another name and then renamed, so that an
/// existing file stays until the new one is complete. Follows a link to the file that it names. Every
/// operation returns an empty text, or "PATH: what went wrong".
class ReplacedFile {
public:
    explicit ReplacedFile(std::string path) : mPath(std::move(path)) {}
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    /// Fails when the file cannot be written or is not a regular one.
    std::string open();

    /// The stream to write to. Its numbers look the same in every locale.
    std::ostream& stream() { return mStream; }

    /// Renames the new file into place.
    std::string commit();

private:
    std::string fail(int error) const;

    std::string mPath;
    std::string mTarget;  ///< with links resolved
    std::string mAside;   ///< the new file's temporary path; empty when there is none
    std::ofstream mStream;
};

/// Whether the path leads to an existing file of that name.
bool isFileNamed(const std::string& path, const std::string& name);

/// Whether both paths lead to the same existing file.
bool isSameFile(const std::string& first, const std::string& second);

}  // namespace control
