#pragma once

#include <sys/types.h>

#include <fstream>
#include <ostream>
#include <string>

namespace control {

/// A file that the user named for output. It is written aside and renamed, so that what is there stays until
/// the new one is whole. A link is followed to the file that it names. Every operation returns an empty text,
/// or "PATH: what went wrong".
class ReplacedFile {
public:
    explicit ReplacedFile(std::string path) : mPath(std::move(path)) {}
    ~ReplacedFile();
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;

    /// Fails when the file cannot be written or is not a regular one.
    std::string open();

    /// What is written into it, with numbers that are the same in every locale.
    std::ostream& stream() { return mStream; }

    /// Puts it into place.
    std::string commit();

private:
    std::string fail(int error) const;

    std::string mPath;
    std::string mTarget;  ///< behind links
    std::string mAside;   ///< empty when there is none
    std::ofstream mStream;
};

/// Whether the path leads to a file of that name that is there.
bool isFileNamed(const std::string& path, const std::string& name);

/// Whether both paths lead to the same file that is there.
bool isSameFile(const std::string& first, const std::string& second);

}  // namespace control
