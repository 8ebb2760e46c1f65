#include "figures/sources/FileTree.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <utility>

namespace sources {

namespace {

constexpr std::size_t LIMIT = 256 * 1024;

/// Orders "hwmon10" after "hwmon9", and addresses on a bus, which are hexadecimal, as the bus does. Android
/// has no strverscmp().
bool isBefore(const std::string& left, const std::string& right) {
    return left.size() != right.size() ? left.size() < right.size() : left < right;
}

}  // namespace

FileTree::FileTree(std::string root) : mRoot(std::move(root)) {
    while (mRoot.size() > 1 && mRoot.back() == '/') {
        mRoot.pop_back();
    }
}

int FileTree::open(const std::string& path, int flags) const {
    // O_PATH allows no further flags.
    flags |= (flags & O_PATH) != 0 ? O_CLOEXEC : O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    if (isLive()) {
        return ::open(path.c_str(), flags);
    }
    const int root = ::open(mRoot.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (root < 0) {
        return -1;
    }
    open_how how = {};
    how.flags = static_cast<unsigned int>(flags);
    how.resolve = RESOLVE_IN_ROOT;
    auto file = static_cast<int>(syscall(SYS_openat2, root, path.c_str(), &how, sizeof(how)));
    if (file < 0 && errno == ENOSYS) {
        // On old kernels, follow no link at the end of a path at all.
        file = openat(root, path.c_str() + 1, flags | O_NOFOLLOW);
    }
    const int error = errno;
    close(root);
    errno = error;
    return file;
}

FileText FileTree::read(const std::string& path) const {
    FileText result;
    const int file = open(path, O_RDONLY);
    if (file < 0) {
        result.error = errno;
        return result;
    }
    struct stat status = {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        result.error = ENOENT;
    }
    std::array<char, 8192> part;
    while (result.error == 0) {
        const ssize_t size = ::read(file, part.data(), part.size());
        if (size == 0) {
            break;
        }
        if (size < 0) {
            result.error = errno == EINTR ? 0 : errno;
        } else if (result.text.size() + static_cast<std::size_t>(size) > LIMIT) {
            result.error = EFBIG;
        } else {
            result.text.append(part.data(), static_cast<std::size_t>(size));
        }
    }
    close(file);
    if (result.error != 0) {
        result.text.clear();
    } else if (mWatcher.onRead) {
        mWatcher.onRead(path, result.text);
    }
    return result;
}

std::vector<std::string> FileTree::list(const std::string& folder) const {
    std::vector<std::string> names;
    const int file = open(folder, O_RDONLY | O_DIRECTORY);
    DIR* const entries = file < 0 ? nullptr : fdopendir(file);
    if (entries == nullptr) {
        if (file >= 0) {
            close(file);
        }
        return names;
    }
    while (const dirent* const entry = readdir(entries)) {  // NOLINT(concurrency-mt-unsafe): this call's own
        if (entry->d_name[0] != '.') {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(entries);
    std::sort(names.begin(), names.end(), isBefore);
    return names;
}

std::vector<std::string> FileTree::find(const std::string& folder, const std::string& beginning) const {
    std::vector<std::string> paths;
    for (const std::string& name : list(folder)) {
        if (name.compare(0, beginning.size(), beginning) == 0) {
            paths.push_back(folder + '/' + name);
        }
    }
    return paths;
}

bool FileTree::exists(const std::string& path) const {
    const int file = open(path, O_PATH);
    if (file >= 0) {
        close(file);
    }
    if (file >= 0 && mWatcher.onFound) {
        mWatcher.onFound(path);
    }
    return file >= 0;
}

std::string FileTree::link(const std::string& path) const {
    const std::string whole = mRoot + path;
    std::array<char, PATH_MAX> target;
    const ssize_t size = readlink(whole.c_str(), target.data(), target.size());
    if (size <= 0) {
        return {};
    }
    std::string text(target.data(), static_cast<std::size_t>(size));
    if (mWatcher.onLink) {
        mWatcher.onLink(path, text);
    }
    return text;
}

}  // namespace sources
