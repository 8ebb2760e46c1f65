#pragma once

#include <string>

namespace doubles {

/// What a shell command for one of our programs begins with: the emulator's name and a space where these
/// tests run in one, because the kernel cannot start a program for another processor by itself; empty
/// elsewhere.
std::string emulator();

/// Whether an emulator runs these tests.
inline bool isEmulated() {
    return !emulator().empty();
}

}  // namespace doubles
