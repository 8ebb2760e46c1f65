#pragma once

#include <functional>
#include <string>
#include <vector>

namespace sources {

/// A kernel file's text, or why there is none.
struct FileText {
    std::string text;
    int error = 0;  ///< an error number; 0 when the file could be read
};

/// The files of this machine, or a folder in which files of another machine lie under their own absolute
/// paths. Links inside such a folder never lead out of it. Every call opens and closes what it reads, never
/// waits for a file that is none, and allocates: not for the frame thread. Any thread.
class FileTree {
public:
    /// An empty `root` is this machine.
    explicit FileTree(std::string root = {});

    bool isLive() const { return mRoot.empty(); }

    /// Told of every file that was read or was found to exist, of a link with what it says.
    struct Watcher {
        std::function<void(const std::string& path, const std::string& text)> onRead;
        std::function<void(const std::string& path)> onFound;
        std::function<void(const std::string& path, const std::string& target)> onLink;
    };
    void watch(Watcher watcher) { mWatcher = std::move(watcher); }

    /// At most 256 KiB of a regular file; more is EFBIG.
    FileText read(const std::string& path) const;

    /// The names in a folder but "." and "..", numbers in them in numeric order; empty when it cannot be
    /// read.
    std::vector<std::string> list(const std::string& folder) const;

    /// Paths of the folder's entries that begin so.
    std::vector<std::string> find(const std::string& folder, const std::string& beginning) const;

    bool exists(const std::string& path) const;

    /// What a symbolic link says; empty for anything else.
    std::string link(const std::string& path) const;

private:
    int open(const std::string& path, int flags) const;

    std::string mRoot;
    Watcher mWatcher;
};

}  // namespace sources
