#pragma once

#include "android/HelperProgram.h"

#include <ostream>
#include <string>
#include <vector>

namespace control {

/// The program adb. Either runs its commands or prints them, as lines for a shell, and takes their answers
/// for empty and successful.
class Adb {
public:
    /// `program` is adb's path. `serial` chooses a device; empty for the only one. `shown` gets the commands
    /// instead of their being run; null to run them.
    Adb(std::string program, std::string serial, std::ostream* shown)
        : mProgram(std::move(program)), mSerial(std::move(serial)), mShown(shown) {}

    bool isShowing() const { return mShown != nullptr; }

    /// Prints a line of explanation; nothing when commands are run.
    void explain(const std::string& text) const;

    Answer run(const std::vector<std::string>& words) const;

    /// Runs a command on the device. Each word reaches it as it is, whatever is in it.
    Answer shell(const std::vector<std::string>& words) const;

    /// Runs a line of the device's shell.
    Answer shellText(const std::string& line) const;

    /// The command line for these words, as somebody would type it.
    std::string line(const std::vector<std::string>& words) const;

    /// Unpacks into a folder what this command of the device puts out as a tar archive.
    Answer unpack(const std::vector<std::string>& words, const std::string& folder) const;

private:
    std::vector<std::string> withSerial(const std::vector<std::string>& words) const;

    std::string mProgram;
    std::string mSerial;
    std::ostream* mShown;
};

}  // namespace control
