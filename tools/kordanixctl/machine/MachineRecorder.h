#pragma once

#include "figures/sources/FileTree.h"

#include <sys/types.h>

#include <string>

namespace control {

/// Copies what is read from a machine into a folder, under the same paths; the process's files below
/// proc/self. Of files that say more than figures only the lines that matter are kept.
class MachineRecorder {
public:
    MachineRecorder(std::string folder, pid_t process);

    /// What the tree tells goes into the folder. The recorder outlives the tree's use.
    sources::FileTree::Watcher watcher();

    /// Later files go into another folder.
    void continueIn(std::string folder) { mFolder = std::move(folder); }

    /// What went wrong first; empty when nothing did.
    const std::string& error() const { return mError; }

private:
    std::string placeFor(const std::string& path);
    void write(const std::string& path, const std::string& text);
    void mark(const std::string& path);
    void link(const std::string& path, const std::string& target);

    std::string mFolder;
    std::string mProcess;  ///< "/proc/PID"; empty for none
    std::string mError;
};

}  // namespace control
