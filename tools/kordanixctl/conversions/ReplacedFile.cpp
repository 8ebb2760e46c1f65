#include "conversions/ReplacedFile.h"

#include "io/PlainFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <locale>
#include <system_error>

namespace control {

ReplacedFile::~ReplacedFile() {
    if (!mAside.empty()) {
        unlink(mAside.c_str());
    }
}

std::string ReplacedFile::open() {
    constexpr mode_t NEW_FILE = 0666;
    struct stat status = {};
    const bool isThere = stat(mPath.c_str(), &status) == 0;
    if (isThere && !S_ISREG(status.st_mode)) {
        return fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    if (isThere && access(mPath.c_str(), W_OK) != 0) {
        return fail(errno);
    }
    std::error_code notThere;
    mTarget = std::filesystem::canonical(mPath, notThere);
    mTarget = notThere ? mPath : mTarget;
    std::string aside = mTarget + '.' + std::to_string(getpid()) + ".part";
    unlink(aside.c_str());
    const int file = platform::openPlainFile(aside, O_WRONLY | O_CREAT | O_EXCL,
                                             isThere ? status.st_mode & ACCESSPERMS : NEW_FILE);
    if (file < 0) {
        return fail(errno);
    }
    close(file);
    mAside = std::move(aside);
    mStream.imbue(std::locale::classic());
    mStream.open(mAside, std::ios::binary);
    return mStream ? std::string() : fail(errno);
}

std::string ReplacedFile::commit() {
    errno = 0;
    mStream.close();
    if (!mStream) {
        return fail(errno == 0 ? EIO : errno);
    }
    if (std::rename(mAside.c_str(), mTarget.c_str()) != 0) {
        return fail(errno);
    }
    mAside.clear();
    return {};
}

std::string ReplacedFile::fail(int error) const {
    return mPath + ": cannot be written: " + (error == EINVAL ? "it " : "") + platform::plainFileError(error);
}

bool isFileNamed(const std::string& path, const std::string& name) {
    std::error_code notThere;
    return std::filesystem::canonical(path, notThere).filename() == name;
}

bool isSameFile(const std::string& first, const std::string& second) {
    std::error_code notThere;
    return std::filesystem::equivalent(first, second, notThere);
}

}  // namespace control
