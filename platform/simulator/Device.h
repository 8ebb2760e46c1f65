#pragma once

#include "simulator/Script.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// A device as its folder describes it; devices/README.md says how. Never changes once loaded, and then any
/// thread may use it.
class Device {
public:
    /// Reads the folder. Returns an empty text, or which file is wrong and how: "PATH:LINE: ..." where the
    /// fault has a line.
    std::string load(const std::string& folder);

    /// Returns the content of the device's file at this absolute path at this time, in seconds from 0;
    /// nothing when the device has no such file.
    std::optional<std::string> fileAt(const std::string& path, double seconds) const;

    /// The system properties that the device sets, by name.
    const std::map<std::string, std::string>& properties() const { return mProperties; }

    const Script& script() const { return mScript; }

private:
    /// A text and the script's figure that follows it; the last piece of a file has no figure.
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
