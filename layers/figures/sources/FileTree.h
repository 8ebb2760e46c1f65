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

/// The files of this machine, or a folder with another machine's files under their absolute paths. Links
/// inside such a folder never lead out of it. Every call opens and closes its file, never waits for a FIFO or
/// a device, and allocates: do not use it on the frame thread. Any other thread.
class FileTree {
public:
    /// An empty `root` means this machine.
    explicit FileTree(std::string root = {});

    bool isLive() const { return mRoot.empty(); }

    /// Called for every file that was read or found to exist, and for a link with its target.
    struct Watcher {
        std::function<void(const std::string& path, const std::string& text)> onRead;
        std::function<void(const std::string& path)> onFound;
        std::function<void(const std::string& path, const std::string& target)> onLink;
    };
    void watch(Watcher watcher) { mWatcher = std::move(watcher); }

    /// Reads a regular file; with more than 256 KiB it gives EFBIG.
    FileText read(const std::string& path) const;

    /// Returns the names in a folder without the hidden ones, the shorter first, so that numbers are in
    /// numeric order; empty when it cannot read the folder.
    std::vector<std::string> list(const std::string& folder) const;

    /// Returns the paths of the folder's entries whose names begin with `beginning`.
    std::vector<std::string> find(const std::string& folder, const std::string& beginning) const;

    bool exists(const std::string& path) const;

    /// Returns a symbolic link's target; empty for anything else.
    std::string link(const std::string& path) const;

private:
    int open(const std::string& path, int flags) const;

    std::string mRoot;
    Watcher mWatcher;
};

}  // namespace sources
