#pragma once

#include "simulator/Script.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// A device as its folder describes it; devices/README.md says what stands there. Constant once it is loaded,
/// and then for any thread.
class Device {
public:
    /// Reads the folder. Returns an empty text, or what is wrong with which file: "PATH:LINE: ..." where the
    /// fault has a line.
    std::string load(const std::string& folder);

    /// The content of the device's file of this absolute path at this time, in seconds from 0; nothing when
    /// the device has no such file.
    std::optional<std::string> fileAt(const std::string& path, double seconds) const;

    /// The system properties that the device sets, by name.
    const std::map<std::string, std::string>& properties() const { return mProperties; }

    const Script& script() const { return mScript; }

private:
    /// A text, then a figure of the script; the last piece of a file has none.
    struct Piece {
        std::string text;
        std::string figure;
        int decimals = 0;
    };

    std::string readFiles(const std::string& folder);
    std::string readProperties(const std::string& path);
    std::string parseFile(const std::string& path, std::string_view text, std::vector<Piece>& pieces) const;

    Script mScript;
    std::map<std::string, std::vector<Piece>> mFiles;
    std::map<std::string, std::string> mProperties;
};

}  // namespace simulator
