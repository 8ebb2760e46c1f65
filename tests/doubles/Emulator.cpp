#include "doubles/Emulator.h"

#include <dlfcn.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace {

// Set by the toolchain file. Read at the start, because execv must not call what a forked child must not.
const char* const gEmulator = std::getenv("KORDANIX_EMULATOR");

using Execv = int (*)(const char*, char* const*);
const auto gExecv = reinterpret_cast<Execv>(dlsym(RTLD_NEXT, "execv"));

}  // namespace

namespace doubles {

std::string emulator() {
    return gEmulator == nullptr ? "" : std::string(gEmulator) + " ";
}

}  // namespace doubles

/// Restarts a program of ours in the emulator, as a death test does with its own executable.
extern "C" int execv(const char* path, char* const* arguments) {
    static std::array<char*, 64> emulated;
    if (gEmulator == nullptr) {
        return gExecv(path, arguments);
    }
    emulated = {const_cast<char*>("/usr/bin/env"), const_cast<char*>(gEmulator), const_cast<char*>("-0"),
                arguments[0], const_cast<char*>(path)};
    for (std::size_t i = 1; arguments[i] != nullptr && i + 5 < emulated.size(); ++i) {
        emulated[i + 4] = arguments[i];
    }
    return gExecv(emulated[0], emulated.data());
}
